/// `tool::Colour`.
#pragma once

#include <algorithm>
#include <cstdint>

namespace tool {

struct Colour
{
    std::uint8_t red = 0, green = 0, blue = 0;

    friend constexpr bool operator==(const Colour&, const Colour&) = default;
};

constexpr Colour white{255, 255, 255};
constexpr Colour ink{45, 50, 58}; ///< of letters and outlines

/// The colour in less light: 1 leaves it as it is, 0 is black.
inline Colour shaded(const Colour& colour, double light)
{
    const auto dim = [light](std::uint8_t part) {
        return static_cast<std::uint8_t>(std::clamp(part * light, 0.0, 255.0));
    };
    return {dim(colour.red), dim(colour.green), dim(colour.blue)};
}

} // namespace tool
