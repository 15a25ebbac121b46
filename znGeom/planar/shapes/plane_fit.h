/// Planes through points.
///
/// The fits are eliminations and not eigenvector computations: the same points always give the same plane. All run on
/// the calling thread, linear in points.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/mesh/point_mesh.h"

namespace znGeom {

/// Fits a plane through the centroid of points.
///
/// \param plane  the fitted plane; for points on a line or in one place, some plane through them. Unchanged without
///               points
/// \return the rank: 2 for a proper plane, 1 for points on a line, 0 for points that coincide, and without points.
///         What vanishes is judged by `epsilonTol` on sums of squared distances, and so depends on the scale
///
/// The normal is the null vector of the scatter matrix of the points, read from its reduced rows after a Gauss-Jordan
/// elimination that takes no pivot in the last column. Points that spread further in x and y than they deviate in z get
/// the plane of least squares along z; other axes take over where a pivot vanishes.
ZNGEOM_API int fit(int count, const znLinear::Point* points, znLinear::Plane& plane);

/// The same for all vertices of a mesh.
ZNGEOM_API int fit(const PointMesh& mesh, znLinear::Plane& plane);

/// Finds a plane that contains the chord of a curve, from the first of `count` points to the last, and follows the
/// others.
///
/// \param plane  the first point, and the direction at right angles to that of the greatest spread around the chord.
///               With no more than two points, or ends that coincide: the origin and a normal that is zero and invalid
ZNGEOM_API void fitWithEndsOnPlane(int count, const znLinear::Point* points, znLinear::Plane& plane);

/// Finds out whether points lie in one plane.
///
/// \param plane      the plane that `fit` gives; unchanged when the answer is no
/// \param tolerance  the greatest distance from it that is allowed. The first three points are not tested: three points
///                   always lie in a plane, whatever rounding does to it
/// \return false also for fewer than three points. Points on a line lie in one plane
ZNGEOM_API bool recognizePlane(const zn::vector<znLinear::Point>& points, znLinear::Plane& plane, double tolerance);

/// The same for all vertices of a mesh.
ZNGEOM_API bool recognizePlane(const PointMesh& mesh, znLinear::Plane& plane, double tolerance);

} // namespace znGeom
