#include "apps/zngeom/byte_sink.h"

#include <cerrno>
#include <charconv>
#include <cstring>

#include "apps/zngeom/failure.h"

namespace tool {

namespace {

[[noreturn]] void failToWrite() { throw Failure(std::string("can't be written: ") + std::strerror(errno)); }

} // namespace

ByteSink::ByteSink(const std::string& path) : m_file(std::fopen(path.c_str(), "wb"), &std::fclose)
{
    if (!m_file) failToWrite();
}

void ByteSink::decimal(float value)
{
    char digits[32];
    text({digits, std::to_chars(digits, digits + sizeof digits, value).ptr});
}

void ByteSink::decimal(int value)
{
    char digits[16];
    text({digits, std::to_chars(digits, digits + sizeof digits, value).ptr});
}

void ByteSink::flush()
{
    if (std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file.get()) != m_buffer.size()) failToWrite();
    m_buffer.clear();
}

void ByteSink::finish()
{
    flush();
    if (std::fclose(m_file.release()) != 0) failToWrite();
}

} // namespace tool
