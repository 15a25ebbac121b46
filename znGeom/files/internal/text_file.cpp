#include "znGeom/files/internal/text_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace znGeom::internal {

namespace {

/// In binary mode: what is in the file is what is read and written.
File openFile(const znOS::Filename& file, const char* mode)
{
    File opened(std::fopen(file.path().asMultibyte(znString::Encoding::Native).asChar(), mode));
    if (opened) std::setvbuf(opened.get(), nullptr, _IONBF, 0);
    return opened;
}

std::unique_ptr<char[]> makeBuffer(size_t size) { return std::make_unique_for_overwrite<char[]>(size); }

} // namespace

TextReader::TextReader(const znOS::Filename& file) : TextReader(std::string_view())
{
    errno = 0;
    m_file = openFile(file, "rb");
    if (!m_file) m_error = errno;
    m_isOpen = m_file && (fill() || std::ferror(m_file.get()) == 0);
}

TextReader::TextReader(std::string_view text, size_t size)
    : m_memory(text), m_isOpen(true), m_capacity(size), m_buffer(makeBuffer(size))
{}

bool TextReader::nextBlock()
{
    m_used -= m_blockSize;
    m_hasAddedEnd = false;
    if (m_used > 0) std::memmove(m_buffer.get(), end(), m_used);
    m_blockSize = 0;
    size_t searched = 0;
    do {
        const std::string_view added(m_buffer.get() + searched, m_used - searched);
        const size_t lineEnd = added.rfind('\n');
        if (lineEnd != std::string_view::npos) return m_blockSize = searched + lineEnd + 1, true;
        searched = m_used;
    } while (fill());
    if (m_used == 0) return false;
    m_buffer[m_used++] = '\n';
    m_hasAddedEnd = true;
    m_blockSize = m_used;
    return true;
}

bool TextReader::requireBytes(const char*& at, size_t count)
{
    if (m_hasAddedEnd) --m_used;
    m_hasAddedEnd = false;
    const size_t left = m_used - std::min(m_used, static_cast<size_t>(at - begin()));
    if (left < count) {
        std::memmove(m_buffer.get(), m_buffer.get() + (m_used - left), left);
        m_used = left;
        while (m_used < count && fill()) {
        }
        at = begin(); // the buffer may have grown
    }
    m_blockSize = m_used;
    return m_used - static_cast<size_t>(at - begin()) >= count;
}

std::int64_t TextReader::passToEnd()
{
    do m_used = m_blockSize = 0;
    while (fill());
    return m_bytesRead;
}

/// Reads more after what is there, and keeps a byte free for a line end. False at the end of the text.
bool TextReader::fill()
{
    if (m_used + 1 >= m_capacity) {
        m_capacity *= 2;
        auto larger = makeBuffer(m_capacity);
        std::copy_n(m_buffer.get(), m_used, larger.get());
        m_buffer = std::move(larger);
    }
    const size_t room = m_capacity - m_used - 1;
    const size_t count = m_file ? std::fread(m_buffer.get() + m_used, 1, room, m_file.get())
                                : m_memory.copy(m_buffer.get() + m_used, room);
    if (!m_file) m_memory.remove_prefix(count);
    if (count == 0 && m_file && std::ferror(m_file.get()) != 0) m_error = errno;
    m_used += count;
    m_bytesRead += static_cast<std::int64_t>(count);
    return count > 0;
}

TextWriter::TextWriter(const znOS::Filename& file) : m_file(openFile(file, "wb"))
{
    if (m_file) m_buffer = makeBuffer(bufferSize);
}

char* TextWriter::line()
{
    if (m_used + lineRoom > bufferSize) flush();
    return m_buffer.get() + m_used;
}

void TextWriter::text(std::string_view text)
{
    flush();
    std::fwrite(text.data(), 1, text.size(), m_file.get());
}

void TextWriter::flush()
{
    if (m_used > 0) std::fwrite(m_buffer.get(), 1, m_used, m_file.get());
    m_used = 0;
}

} // namespace znGeom::internal
