/// Decimal numbers in text, the same under every locale.
///
/// The scanners take the longest beginning that can be a number, as a stream does: "1.5abc" is 1.5 with "abc" behind
/// it, "1-2" is two numbers, "1e" is none at all, since its exponent is missing. There is no hexadecimal form:
/// "0x10" is 0 with "x10" behind it. They don't look for the end of the text: behind the last number there must stand
/// a byte that belongs to no number, such as a line end, and `readAhead` further bytes that may be read.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace znGeom::internal {

/// How far behind the end of a number the scanners may look.
constexpr int readAhead = 8;

enum class Scan {
    Number,   ///< read
    TooLarge, ///< a number, but out of the range of its type
    None      ///< no number stands here
};

constexpr auto powersOfTen = [] {
    std::array<std::uint64_t, 20> powers{};
    powers[0] = 1;
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
    return powers;
}();

inline bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
/// White space that does not end a line.
inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r'; }
inline bool isSpace(char c) { return c == ' ' || static_cast<unsigned char>(c - '\t') < 5; }

/// Appends the digits at `at` to those of `value`, modulo 2^64, and returns their end.
inline const char* scanDigits(const char* at, std::uint64_t& value)
{
    if constexpr (std::endian::native == std::endian::little) {
        // Eight characters at a time: the digits become 0 to 9, any other byte gets its top bit set, and the digits are
        // moved up so that zeros stand before them. Then neighbours are joined to numbers of 2, 4 and 8 digits.
        for (;;) {
            std::uint64_t bytes;
            std::memcpy(&bytes, at, sizeof bytes);
            bytes ^= 0x3030303030303030u;
            const std::uint64_t others = (bytes | (bytes + 0x7676767676767676u)) & 0x8080808080808080u;
            const unsigned count = static_cast<unsigned>(std::countr_zero(others)) / 8;
            if (count == 0) return at;
            bytes <<= 64 - 8 * count;
            bytes = 10 * bytes + (bytes >> 8);
            bytes = ((bytes & 0x000000FF000000FFu) * (100 + (1000000ull << 32)) +
                     ((bytes >> 16) & 0x000000FF000000FFu) * (1 + (10000ull << 32))) >>
                    32;
            value = value * powersOfTen[count] + bytes;
            at += count;
            if (count < 8) return at;
        }
    } else {
        for (; isDigit(*at); ++at) value = value * 10 + static_cast<unsigned>(*at - '0');
        return at;
    }
}

/// Reads an optional sign and digits. A number out of range gives the nearest `int`; none leaves `value` as it is.
inline Scan scanInt(const char*& at, int& value)
{
    const bool negative = *at == '-';
    const char* const digits = at + (negative || *at == '+');
    std::uint64_t magnitude = 0;
    const char* const end = scanDigits(digits, magnitude);
    at = end;
    if (end == digits) return Scan::None;
    constexpr std::int64_t least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
    if (end - digits > 9) { // leading zeros are rare enough to be looked for here
        const char* first = digits;
        while (first != end && *first == '0') ++first;
        if (end - first > 18) magnitude = std::uint64_t(most) + 2;
    }
    const std::int64_t number = negative ? -std::int64_t(magnitude) : std::int64_t(magnitude);
    value = static_cast<int>(number < least ? least : number > most ? most : number);
    return value == number ? Scan::Number : Scan::TooLarge;
}

/// Reads an optional sign, digits with or without a point, and an optional exponent: the nearest `float`, ties to even.
/// A number that is too large gives an infinity, one that is too small a zero; none gives 0.
Scan scanFloat(const char*& at, float& value);

/// The longest text that the writers make.
constexpr int longestNumber = 24;

char* writeInt(char* out, int value);
/// What "%.6g" and "%.10g" print; returns the end of the text.
char* writeFloat6(char* out, float value);
char* writeFloat10(char* out, float value);

} // namespace znGeom::internal
