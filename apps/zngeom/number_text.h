/// Numbers in listings.
#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// Appends nine digits of a number, which is more than mesh files have.
inline void appendNumber(std::string& text, double value)
{
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 9).ptr);
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

} // namespace tool
