/// Polygons of any size as `triangulatePolygon` should see them.
#pragma once

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom::internal {

/// The points from the first one on, times the power of two that brings the largest coordinate to between 2^10 and
/// 2^11: what counts as a triangle without area must not depend on the unit of the mesh.
inline zn::vector<znLinear::Point> framed(const zn::vector<znLinear::Point>& points)
{
    double largest = 0;
    for (const znLinear::Point& p : points)
        for (int axis = 0; axis < 3; ++axis) largest = std::max(largest, std::fabs(p[axis] - points[0][axis]));
    if (!(largest > 0) || !std::isfinite(largest)) return points;
    const double scale = std::ldexp(1.0, 10 - std::ilogb(largest));
    zn::vector<znLinear::Point> result;
    for (const znLinear::Point& p : points) result.append(((p - points[0]) * scale).asPoint());
    return result;
}

} // namespace znGeom::internal
