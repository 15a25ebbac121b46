/// `tool::ByteSink`: writing a file with every failure noticed.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace tool {

/// Collects bytes and writes them in large pieces; fails when the system doesn't take them.
class ByteSink
{
public:
    explicit ByteSink(const std::string& path);

    void text(std::string_view text)
    {
        m_buffer += text;
        if (m_buffer.size() >= pieceSize) flush();
    }
    /// The shortest decimal number that gives the same value again.
    void decimal(float value);
    void decimal(int value);
    /// The bytes of a number, the lowest first.
    template <typename Number>
    void binary(Number value)
    {
        auto bytes = std::bit_cast<std::array<char, sizeof(Number)>>(value);
        if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
        text({bytes.data(), bytes.size()});
    }

    void floats(const float* values, int count)
    {
        for (int i = 0; i < count; ++i) binary(values[i]);
    }

    /// Writes what is left and closes the file; the file is complete only after this.
    void finish();

private:
    static constexpr std::size_t pieceSize = 1 << 20;

    void flush();

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
    std::string m_buffer;
};

} // namespace tool
