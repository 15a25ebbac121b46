/// Numbers in listings.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// Appends nine digits of a number, which is more than mesh files have.
inline void appendNumber(std::string& text, double value)
{
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 9).ptr);
}

/// Appends as many digits of a number as tell it from all others of its precision.
template <std::floating_point T>
void appendAllDigits(std::string& text, T value)
{
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// The number that a word is; none for anything else, or for what is not finite.
inline std::optional<double> finiteNumber(std::string_view word)
{
    double value = 0;
    const char* end = word.data() + word.size();
    const auto [parsed, error] = std::from_chars(word.data(), end, value);
    const bool isNumber = !word.empty() && parsed == end && error == std::errc() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

/// The same for a number above 0.
inline std::optional<double> positiveNumber(std::string_view word)
{
    const std::optional<double> number = finiteNumber(word);
    return number && *number > 0 ? number : std::nullopt;
}

/// As many numbers as are asked for, with commas between them; none for anything else, or where one is not finite.
inline std::vector<double> finiteNumbers(std::string_view text, std::size_t count)
{
    std::vector<double> numbers;
    for (bool isMore = true; isMore && numbers.size() < count;) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const std::optional<double> number = finiteNumber(text.substr(0, comma));
        if (!number) return {};
        numbers.push_back(*number);
        isMore = comma < text.size();
        text.remove_prefix(isMore ? comma + 1 : comma);
        if (numbers.size() == count && isMore) return {};
    }
    return numbers.size() == count ? numbers : std::vector<double>();
}

} // namespace tool
