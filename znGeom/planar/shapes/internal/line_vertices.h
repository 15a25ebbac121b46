/// The vertices of many lines as points of the plane.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom::internal {

/// The x and y of all vertices of polylines of either kind, in order.
template <typename Line>
zn::vector<znLinear::Point2> lineVertices(const zn::vector<const Line*>& lines)
{
    int count = 0;
    for (const Line* line : lines) count += line->getNumVertices();
    zn::vector<znLinear::Point2> points;
    points.reserve(count);
    for (const Line* line : lines)
        for (int i = 0; i < line->getNumVertices(); ++i) {
            const auto& point = line->getVertex(i).point;
            points.append(znLinear::Point2(point.x, point.y));
        }
    return points;
}

} // namespace znGeom::internal
