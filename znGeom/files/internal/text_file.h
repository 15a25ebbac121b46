/// Text files in large blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>

#include "znGeom/foundation/text/filename.h"

namespace znGeom::internal {

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Small enough for a buffer to stay in the processor's cache between being filled and being emptied.
constexpr size_t bufferSize = 1 << 17;

/// Hands out a text in blocks of whole lines. Every block ends with a line end, the last one too. One buffer serves for
/// all; only a line that is longer makes it grow.
class TextReader
{
public:
    explicit TextReader(const znOS::Filename& file);
    /// Reads from memory, which must outlive the reader, through a buffer of `size` bytes, at least 2.
    explicit TextReader(std::string_view text, size_t size = bufferSize);

    /// False for a file that did not open, or from which nothing can be read, such as a folder.
    bool isOpen() const { return m_isOpen; }

    /// Whether there is nothing in it. To be called before the first block.
    bool isEmpty() const { return m_used == 0 && m_memory.empty(); }

    /// Goes on to the next block, which takes the place of the last one; false at the end of the text.
    bool nextBlock();
    const char* begin() const { return m_buffer.get(); }
    const char* end() const { return m_buffer.get() + m_blockSize; }

    /// The size of the byte order mark with which the block begins; 0 for none.
    size_t markSize() const { return std::string_view(begin(), m_blockSize).starts_with("\xEF\xBB\xBF") ? 3 : 0; }

    /// Makes `count` bytes contiguous from `at` on, a place within the current block or its end, and moves `at` to
    /// them; the block then holds whatever bytes are there, wherever lines end. For what is not text, or not text from
    /// some point on. False when fewer are left.
    bool requireBytes(const char*& at, size_t count);

    /// Ends the current block at a place within it: the next one begins there.
    void endBlock(const char* at) { m_blockSize = static_cast<size_t>(at - begin()); }

    /// How many bytes have been taken from the file so far.
    std::int64_t bytesRead() const { return m_bytesRead; }
    /// Whether the file couldn't be read to its end, and why.
    int error() const { return m_error; }

    /// The size of the whole text. Skips all blocks that are left.
    std::int64_t passToEnd();

private:
    bool fill();

    File m_file;
    std::string_view m_memory;
    bool m_isOpen = false;
    size_t m_capacity;
    std::unique_ptr<char[]> m_buffer;
    size_t m_blockSize = 0;     ///< at the beginning of the buffer
    size_t m_used = 0;          ///< the block, and what was read beyond it
    bool m_hasAddedEnd = false; ///< the last byte of the buffer is a line end that the text doesn't have
    std::int64_t m_bytesRead = 0;
    int m_error = 0; ///< the system's number
};

/// Collects text and writes it in blocks. A write that fails, on a full disk for example, is not noticed.
class TextWriter
{
public:
    explicit TextWriter(const znOS::Filename& file);
    ~TextWriter() { flush(); }
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    bool isOpen() const { return m_file != nullptr; }

    /// Where to write the next line, with room for `lineRoom` characters; `setEnd` takes its end.
    char* line();
    void setEnd(const char* end) { m_used = static_cast<size_t>(end - m_buffer.get()); }

    void text(std::string_view text);

    static constexpr size_t lineRoom = 256;

private:
    void flush();

    File m_file;
    std::unique_ptr<char[]> m_buffer;
    size_t m_used = 0;
};

} // namespace znGeom::internal
