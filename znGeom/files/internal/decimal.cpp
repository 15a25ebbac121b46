#include "znGeom/files/internal/decimal.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace znGeom::internal {

namespace {

/// Powers of ten that a `double` holds exactly.
constexpr double exactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int largestExactPower = 22;

/// The parts of a number in text.
struct Parts
{
    const char* end = nullptr;
    bool negative = false;
    std::uint64_t digits = 0;     ///< modulo 2^64
    std::ptrdiff_t numDigits = 0; ///< leading zeros included
    int exponent = 0;             ///< of the last digit
    bool complete = false;
};

/// Computes digits * 10^exponent as a `double` with an error of at most three units in its last place, which settles
/// the `float` except close to the middle between two floats. False when it is not settled.
bool convertQuickly(const Parts& parts, float& value)
{
    if (parts.numDigits > 19 || parts.exponent < -largestExactPower || parts.exponent > largestExactPower) return false;
    double number = static_cast<double>(parts.digits);
    if (parts.exponent < 0)
        number /= exactPowers[-parts.exponent];
    else
        number *= exactPowers[parts.exponent];
    constexpr std::uint64_t middle = 1u << 28, nearMiddle = 4;
    const std::uint64_t tail = std::bit_cast<std::uint64_t>(number) % (2 * middle);
    if (tail - (middle - nearMiddle) <= 2 * nearMiddle || number > 1e38) return false;
    value = static_cast<float>(parts.negative ? -number : number);
    return true;
}

/// Whether a number that no `float` holds is too large and not too small: where its first digit stands decides.
bool isHuge(std::string_view text)
{
    const size_t mantissaEnd = std::min(text.find_first_of("eE"), text.size());
    const std::string_view mantissa = text.substr(0, mantissaEnd);
    const auto point = static_cast<std::ptrdiff_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<std::ptrdiff_t>(mantissa.find_first_of("123456789"));
    if (mantissaEnd == text.size()) return first < point;
    const char* at = text.data() + mantissaEnd + 1;
    int exponent = 0;
    scanInt(at, exponent);
    return exponent + (first < point ? point - first - 1 : point - first) > 0;
}

/// The exact way, for any number.
Scan convertExactly(const char* begin, const char* end, float& value)
{
    begin += *begin == '+';
    const auto result = std::from_chars(begin, end, value);
    if (result.ec == std::errc()) return Scan::Number;
    const bool huge = isHuge({begin, static_cast<size_t>(end - begin)});
    value = huge ? std::numeric_limits<float>::infinity() : 0.0f;
    if (*begin == '-') value = -value;
    return huge ? Scan::TooLarge : Scan::Number;
}

} // namespace

} // namespace znGeom::internal
