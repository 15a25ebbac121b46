#include "znGeom/planar/shapes/polygon.h"

#include <cstddef>
#include <utility>

namespace znGeom {

namespace {

/// Whether the ray from (x, y) towards +x crosses a side. The lower end of the side belongs to it, the upper does not.
bool crossesRay(const float* from, const float* to, double x, double y)
{
    double x0 = double(from[0]), y0 = double(from[1]), x1 = double(to[0]), y1 = double(to[1]);
    if ((y0 > y) == (y1 > y)) return false;
    // Always upwards, so that the rounding is the same from both sides.
    if (y0 > y) {
        std::swap(x0, x1);
        std::swap(y0, y1);
    }
    return (x - x0) * (y1 - y0) < (x1 - x0) * (y - y0);
}

} // namespace

bool pointPolygonIntersect2D(const float* closedPolygon, int numPoints, float x, float y)
{
    if (numPoints < 4) return false;
    bool inside = false;
    for (int i = 0; i + 1 < numPoints; ++i) {
        const float* from = closedPolygon + 2 * static_cast<std::ptrdiff_t>(i);
        inside ^= crossesRay(from, from + 2, double(x), double(y));
    }
    return inside;
}

} // namespace znGeom
