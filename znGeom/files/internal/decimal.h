/// Decimal numbers in text, the same under every locale.
///
/// The scanners take the longest prefix that can be a number, as a stream does: "1.5abc" is 1.5 followed by "abc",
/// "1-2" is two numbers, "1e" is none at all, since its exponent is missing. There is no hexadecimal form: "0x10" is 0
/// followed by "x10". They don't look for the end of the text: the last number must be followed by a byte that belongs
/// to no number, such as a line end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace znGeom::internal {

enum class Scan {
    Number,   ///< read
    TooLarge, ///< a number, but out of the range of its type
    None      ///< there is no number here
};

/// The value of a text that is known to be a number. What these cost does not matter: few numbers need them.
Scan convertInt(const char* begin, const char* end, int& value);
Scan convertFloat(const char* begin, const char* end, float& value);

/// 10 or more for anything that is not a digit.
inline unsigned digitOf(char c) { return static_cast<unsigned char>(c - '0'); }
/// White space that does not end a line.
inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r'; }
inline bool isSpace(char c) { return c == ' ' || static_cast<unsigned char>(c - '\t') < 5; }

/// Appends the digits at `at` to those of `value`, modulo 2^64, and returns their end.
inline const char* scanDigits(const char* at, std::uint64_t& value)
{
    for (unsigned digit = digitOf(*at); digit < 10; digit = digitOf(*++at)) value = value * 10 + digit;
    return at;
}

/// Reads an optional sign and digits. A number out of range gives the nearest `int`; none leaves `value` as it is.
inline Scan scanInt(const char*& at, int& value)
{
    const char* const begin = at;
    const bool negative = *begin == '-';
    const char* const digits = begin + (negative | (*begin == '+'));
    std::uint64_t magnitude = 0;
    at = scanDigits(digits, magnitude);
    if (at == digits) return Scan::None;
    if (at - digits > 9) return convertInt(begin, at, value);
    value = negative ? -static_cast<int>(magnitude) : static_cast<int>(magnitude);
    return Scan::Number;
}

/// Reads an optional sign, digits with or without a point, and an optional exponent: the nearest `float`, ties to even.
/// A number that is too large gives an infinity, one that is too small a zero; none gives 0.
Scan scanFloat(const char*& at, float& value);
/// The same to the nearest `double`, at half the speed.
Scan scanDouble(const char*& at, double& value);

/// The longest text that the writers make.
constexpr int longestNumber = 24;

/// What "%d", "%.6g" and "%.10g" print; the result is the end of the text. The bytes up to `longestNumber` may be
/// written to as well.
char* writeInt(char* out, std::int64_t value);
char* writeFloat6(char* out, float value);
char* writeFloat10(char* out, float value);
char* writeDouble10(char* out, double value);

} // namespace znGeom::internal
