/// What is measured of closing loops of points.
#pragma once

#include <array>
#include <vector>

namespace bench {

/// A loop of a thousand points around a circle, moved about in all directions by up to their distance from one another.
std::vector<std::array<double, 3>> noisyLoop();

/// Whether triangles, three numbers of points each, close a loop: together they have each of its sides once, and every
/// other edge twice, once each way.
bool closesLoop(int numPoints, const std::vector<int>& triangles);

} // namespace bench
