/// Rays and where they meet triangles and boxes.
#pragma once

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/mesh/mesh_records.h"

namespace znGeom {

/// Where the line `origin` + t * `direction` meets the triangle p0, p1, p2 (three floats each; all bounds inclusive).
///
/// \param t, u, v  the line's parameter in lengths of `direction`, and the weights of p1 and p2. Untouched on a miss; a
///                 determinant (twice the area times the length of `direction` times the cosine, not scaled) within
///                 1e-6 is one: rays in the plane and tiny triangles are not seen. Also set, though the result is
///                 false, for a back side that is nearer than the cull distance.
/// A front side counts at any t, even behind the origin; a back side only at the cull distance or beyond. Edges are
/// differences in `float`, everything after that is `double`. After Moller and Trumbore, "Fast, Minimum Storage
/// Ray/Triangle Intersection" (1997), with the division deferred to the end.
ZNGEOM_API bool intersectRayTriangle(const double* direction, const float* origin, const float* p0, const float* p1,
                                     const float* p2, double& t, double& u, double& v);
/// Front sides only, at any t; the cull distance plays no part.
ZNGEOM_API bool intersectRayTriangleCull(const double* direction, const float* origin, const float* p0, const float* p1,
                                         const float* p2, double& t, double& u, double& v);
/// Either side, ahead of the origin by more than `epsilonTol`.
ZNGEOM_API bool intersectRayTriangle(const znLinear::Vector& direction, const znLinear::PointFlt& origin,
                                     const znLinear::PointFlt& p0, const znLinear::PointFlt& p1,
                                     const znLinear::PointFlt& p2);
/// The distance from which back sides count, for the whole process; 1e-6 at first. Not synchronised: an application
/// sets it when it starts.
ZNGEOM_API void setBackfaceCullDistance(double distance);

/// A ray with what box tests need, and the nearest triangle it has met.
class ZNGEOM_API Ray
{
public:
    znLinear::PointFlt origin;
    znLinear::Vector m_direction;         ///< of any length, which is the unit of parameters
    znLinear::VectorFlt inverseDirection; ///< a zero component gives infinity
    /// For each axis, which of the six floats of a box is the side that the ray reaches first or last, by its sign
    /// there.
    int nearX, farX, nearY, farY, nearZ, farZ;
    mutable double triParam = static_cast<double>(BoundingBox::largest);
    mutable double baryU = 0, baryV = 0;

    Ray(const znLinear::PointFlt& from, const znLinear::Vector& along);

    const znLinear::Vector& direction() const { return m_direction; }
    /// The parameter of the nearest triangle met so far (the largest float before the first), and its weights.
    double triIntersectionRayParam() const { return triParam; }
    double triIntersectionBaryU() const { return baryU; }
    double triIntersectionBaryV() const { return baryV; }

    /// Whether the ray is in the box somewhere between two parameters. Touching the interval's ends is a miss.
    bool intersects(const BoundingBox& box, float tNear, float tFar) const;
    /// Whether the ray meets a triangle beyond `epsilonTolFlt`. Keeps the hit when it is the nearest so far, although
    /// the ray is const: its geometry never changes.
    bool intersects(const MeshTriangle& triangle, const MeshVertex* vertices) const;
};

} // namespace znGeom
