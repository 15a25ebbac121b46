/// Lines to be thinned out.
#pragma once

#include <array>
#include <vector>

namespace bench {

using PlanePoint = std::array<double, 2>;

/// A wave of a million points with noise of a thousandth of its height.
const std::vector<PlanePoint>& noisyWave();

constexpr double decimationTolerance = 0.01;

} // namespace bench
