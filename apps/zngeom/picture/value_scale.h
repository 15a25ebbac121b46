/// Values at vertices, as colours.
#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>
#include <vector>

#include "apps/zngeom/picture/colour.h"

namespace tool {

/// The colours of the values between two numbers, from blue to red; values beyond have those of the ends.
struct ValueScale
{
    double low = 0, high = 0;

    /// What is not a finite number has a colour of its own.
    static constexpr Colour ofNothing{214, 0, 190};

    Colour at(double value) const;
};

/// From the 2nd to the 98th percentile of the finite values; from 0 to 0 where there are none.
ValueScale scaleOf(const std::vector<float>& values);

/// Adds `--range LO,HI`.
void addRangeOption(CLI::App& app, std::optional<std::string>& text);
/// What it says, if it is given. Fails where that is not two numbers, the lower one first.
std::optional<ValueScale> rangeFrom(const std::optional<std::string>& text);

} // namespace tool
