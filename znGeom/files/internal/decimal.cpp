#include "znGeom/files/internal/decimal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>
#include <system_error>

namespace znGeom::internal {

namespace {

/// Powers of ten that a `double` holds exactly.
constexpr double exactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int largestExactPower = 22;

// Signs follow no pattern that a processor could predict, so they are looked up and not branched on.
constexpr float signs[] = {1, -1};

/// Computes digits * 10^exponent as a `double` with an error of at most two units in its last place, which determines
/// the `float` except close to the middle between two floats. False when it does not.
bool convertQuickly(std::int64_t digits, std::ptrdiff_t exponent, float& value)
{
    if (exponent < -largestExactPower || exponent > largestExactPower) return false;
    const double number = exponent < 0 ? static_cast<double>(digits) / exactPowers[-exponent]
                                       : static_cast<double>(digits) * exactPowers[exponent];
    constexpr std::uint64_t middle = 1u << 28, nearMiddle = 4;
    const std::uint64_t tail = std::bit_cast<std::uint64_t>(number) % (2 * middle);
    if (tail - (middle - nearMiddle) <= 2 * nearMiddle || number > 1e38) return false;
    value = static_cast<float>(number);
    return true;
}

/// Whether a number that no `float` can hold is too large rather than too small: the place of its first digit decides.
bool isHuge(std::string_view text)
{
    const std::string_view mantissa = text.substr(0, text.find_first_of("eE"));
    int power = 0;
    if (mantissa.size() < text.size()) {
        const char* at = text.data() + mantissa.size() + 1;
        scanInt(at, power);
    }
    const size_t point = std::min(mantissa.find('.'), mantissa.size());
    const size_t first = mantissa.find_first_of("123456789");
    return power + static_cast<std::ptrdiff_t>(point) - static_cast<std::ptrdiff_t>(first) > 0;
}

constexpr std::uint64_t powersOfFive[] = {1,     5,      25,      125,     625,      3125,      15625,
                                          78125, 390625, 1953125, 9765625, 48828125, 244140625, 1220703125};

/// From 10^-4 on.
constexpr double decades[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};

constexpr auto digitPairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Writes 0.000ddd, ddd.ddd or ddd, without zeros at the end of a fraction.
/// \param exponent  of the first digit, -4 to precision - 1
template <int precision>
char* writeFixed(char* out, std::uint64_t digits, int exponent)
{
    char text[2 * precision] = {}; // twice: copies of a fixed size are cheap, but may copy more than there is
    for (int i = precision - 2; i >= 0; i -= 2, digits /= 100)
        std::memcpy(text + i, digitPairs.data() + 2 * (digits % 100), 2);
    int used = precision;
    while (text[used - 1] == '0') --used;
    if (exponent < 0) {
        std::copy_n("0.000", 5, out);
        std::memcpy(out + 1 - exponent, text, precision);
        return out + 1 - exponent + used;
    }
    const int whole = exponent + 1;
    std::memcpy(out, text, precision);
    if (used <= whole) return out + whole;
    out[whole] = '.';
    std::memcpy(out + whole + 1, text + whole, precision);
    return out + used + 1;
}

/// value / 2^shift, rounded to the nearest integer, ties to even.
std::uint64_t scaleDown(std::uint64_t value, int shift)
{
    if (shift <= 0) return value << -shift;
    const std::uint64_t half = std::uint64_t(1) << (shift - 1), rest = value & (2 * half - 1), whole = value >> shift;
    return whole + (rest > half || (rest == half && whole % 2 == 1));
}

/// What "%.{precision}g" prints. Where that has no exponent the digits come from exact integers: a float is m * 2^q,
/// its digits are m * 5^k * 2^(q + k), rounded to an integer.
template <int precision>
char* writeFloat(char* out, float value)
{
    constexpr double limit = decades[precision + 4];
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const float magnitude = std::fabs(value);
    *out = '-';
    if (magnitude == 0) return out += bits >> 31, *out = '0', out + 1;
    if (magnitude > 1e-4f && magnitude < static_cast<float>(limit)) {
        const int biased = static_cast<int>(bits >> 23 & 0xFF);
        int exponent = (biased - 127) * 1233 >> 12; // 1233 / 4096 is log10(2), near enough for these
        exponent += static_cast<double>(magnitude) >= decades[exponent + 5];
        const int k = precision - 1 - exponent;
        std::uint64_t digits = scaleDown(((bits & 0x7FFFFF) | 0x800000) * powersOfFive[k], 150 - biased - k);
        if (digits == static_cast<std::uint64_t>(limit)) digits /= 10, ++exponent;
        if (exponent < precision) return writeFixed<precision>(out + (bits >> 31), digits, exponent);
    }
    return std::to_chars(out, out + longestNumber, value, std::chars_format::general, precision).ptr;
}

/// The value of a text that is known to be a number.
template <typename T>
Scan convertReal(const char* begin, const char* end, T& value)
{
    begin += *begin == '+';
    const auto result = std::from_chars(begin, end, value);
    if (result.ec == std::errc()) return Scan::Number;
    const bool huge = isHuge({begin, static_cast<size_t>(end - begin)});
    value = huge ? std::numeric_limits<T>::infinity() : T(0);
    if (*begin == '-') value = -value;
    return huge ? Scan::TooLarge : Scan::Number;
}

} // namespace

Scan convertFloat(const char* begin, const char* end, float& value) { return convertReal(begin, end, value); }

Scan convertInt(const char* begin, const char* end, int& value)
{
    using Limits = std::numeric_limits<int>;
    begin += *begin == '+';
    const auto result = std::from_chars(begin, end, value);
    if (result.ec == std::errc()) return Scan::Number;
    value = *begin == '-' ? Limits::min() : Limits::max();
    return Scan::TooLarge;
}

Scan scanFloat(const char*& at, float& value)
{
    const char* const begin = at;
    const bool negative = *begin == '-';
    const char* const whole = begin + (negative | (*begin == '+'));
    std::uint64_t digits = 0;
    at = scanDigits(whole, digits);
    std::ptrdiff_t numDigits = at - whole, exponent = 0;
    if (*at == '.') {
        const char* const fraction = at + 1;
        at = scanDigits(fraction, digits);
        exponent = fraction - at;
        numDigits -= exponent;
    }
    value = 0;
    if (numDigits == 0) return Scan::None;
    if ((*at | 0x20) == 'e') {
        int power = 0;
        if (scanInt(++at, power) == Scan::None) return Scan::None;
        exponent += power;
    }
    if (numDigits > 18 || !convertQuickly(static_cast<std::int64_t>(digits), exponent, value))
        return convertFloat(begin, at, value);
    value *= signs[negative];
    return Scan::Number;
}

Scan scanDouble(const char*& at, double& value)
{
    const char* const begin = at;
    float narrowed; // where the number ends is the same in any precision
    value = 0;
    return scanFloat(at, narrowed) == Scan::None ? Scan::None : convertReal(begin, at, value);
}

char* writeInt(char* out, std::int64_t value) { return std::to_chars(out, out + longestNumber, value).ptr; }
char* writeFloat6(char* out, float value) { return writeFloat<6>(out, value); }
char* writeFloat10(char* out, float value) { return writeFloat<10>(out, value); }
char* writeDouble10(char* out, double value)
{
    return std::to_chars(out, out + longestNumber, value, std::chars_format::general, 10).ptr;
}

} // namespace znGeom::internal
