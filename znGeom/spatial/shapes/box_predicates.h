/// Where boxes, frusta, spheres, triangles, segments and planes meet. Touching counts as meeting everywhere.
#pragma once

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/spatial/shapes/frustum.h"
#include "znGeom/spatial/shapes/sphere.h"

namespace znGeom {

/// The point lies in the box or on its surface.
constexpr bool contains(const BoundingBox& box, const znLinear::PointFlt& p)
{
    return box.minX <= p.x && p.x <= box.maxX && box.minY <= p.y && p.y <= box.maxY && box.minZ <= p.z &&
           p.z <= box.maxZ;
}

/// The point lies on the outer side of no plane; exact. `pointFrustumIntersect` is the tolerant form.
ZNGEOM_API bool contains(const Frustum& frustum, const znLinear::Point& p);

/// Conservative: false only when a face of the box or a plane of the frustum separates the two.
ZNGEOM_API bool intersects(const BoundingBox& box, const Frustum& frustum);

ZNGEOM_API bool intersects(const BoundingBox& box, const Sphere& sphere);

/// Box against triangle, three floats a corner; a degenerate triangle is the segment or point that it is. By separating
/// axes in `float`, after Akenine-Moller, "Fast 3D Triangle-Box Overlap Testing" (2001).
ZNGEOM_API bool intersects(const BoundingBox& box, const float* p0, const float* p1, const float* p2);

/// Box against segment, three floats an end.
ZNGEOM_API bool intersects(const BoundingBox& box, const float* p0, const float* p1);

/// \return +1 wholly on the plane's positive side, -1 wholly on the negative one, 0 across it or touching
ZNGEOM_API int intersects(const BoundingBox& box, const znLinear::Plane& plane);

/// The interval of x . v over the points x of the box.
constexpr void project(const BoundingBox& box, const znLinear::VectorFlt& v, float& lo, float& hi)
{
    lo = hi = 0;
    const auto add = [&](float a, float b) {
        lo += std::min(a, b);
        hi += std::max(a, b);
    };
    add(v.dx * box.minX, v.dx * box.maxX);
    add(v.dy * box.minY, v.dy * box.maxY);
    add(v.dz * box.minZ, v.dz * box.maxZ);
}

/// The point is above no plane by more than `epsilonTol`. `contains` is the exact form.
ZNGEOM_API bool pointFrustumIntersect(const znLinear::Point& p, const Frustum& frustum);

/// Segment against frustum.
///
/// \param out  a representative point, not always the entry: `a` whenever either end lies inside, even where only `b`
///             does; otherwise a point where the segment crosses the hull. Untouched on a miss.
ZNGEOM_API bool lineFrustumIntersect(const znLinear::PointFlt& a, const znLinear::PointFlt& b, const Frustum& frustum,
                                     znLinear::PointFlt& out);
ZNGEOM_API bool lineFrustumIntersect(const znLinear::PointFlt& a, const znLinear::PointFlt& b, const Frustum& frustum);

} // namespace znGeom
