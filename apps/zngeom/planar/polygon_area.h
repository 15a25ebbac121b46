/// The area of a polygon.
#pragma once

#include <vector>

#include "znGeom/foundation/linear/point.h"

namespace tool {

/// Above 0 where the corners run counterclockwise; as exact far from the origin as near it.
inline double signedArea(const std::vector<znLinear::Point2>& corners)
{
    double twice = 0;
    for (std::size_t i = 2; i < corners.size(); ++i)
        twice += cross(corners[i - 1] - corners[0], corners[i] - corners[0]);
    return twice / 2;
}

} // namespace tool
