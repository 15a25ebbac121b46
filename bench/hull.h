/// What is measured of hulls and smallest rectangles in the plane.
#pragma once

#include <array>
#include <vector>

namespace bench {

using PlanePoint = std::array<double, 2>;

enum class Spread2d { disk, square, circle };

/// A million points at random: evenly over a disk, over a square, or along a circle.
const std::vector<PlanePoint>& planePoints(Spread2d spread);

/// Whether these corners, counter-clockwise from any of them, make the hull of such points.
bool isHull(Spread2d spread, std::vector<PlanePoint> corners);

/// Whether an area is that of the smallest rectangle around such points.
bool isSmallestRectangle(Spread2d spread, double area);

} // namespace bench
