/// Where lines, planes, cylinders and segments meet. Every `ok` is set on every call; on false the result is stated
/// per function and means nothing more.
#pragma once

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/linear/range.h"

namespace znLinear {

/// The point of a plane on a line. `ok` is false, and the result the line's base point, when the tolerance is greater
/// than the squared sine of the angle between line and plane, or when either has no direction.
ZNGEOM_API Point intersect(const Line& line, const Plane& plane, bool& ok, double tol);

/// The point on the first line that is nearest to the second. `ok` is false, and the result the first line's base
/// point, when the tolerance is greater than the squared sine of the angle between them, or when either has no
/// direction. Skew lines are not a failure.
ZNGEOM_API Point intersect(const Line& first, const Line& second, bool& ok, double tol);

/// The line common to two planes, its direction the cross product of their normals. `ok` is false, and the line has no
/// direction, when they are parallel: `perpendicular2Tol` is greater than the squared sine of their angle.
ZNGEOM_API Line intersect(const Plane& first, const Plane& second, bool& ok);

/// Where a line meets an infinite cylinder about `axis`: the parameters on `line`, ascending, into `t` (room for two).
/// \return the number of hits, 0 to 2; a touching line hits once; a line along the axis (`perpendicular2Tol` is greater
///         than the squared sine of their angle) or without length never hits
ZNGEOM_API int intersectCylinder(const ParamLine& line, const Line& axis, double radius, double* t);

/// Whether the segments a0 to a1 and b0 to b1 of the plane meet, ends included: a parameter beyond an end by less than
/// `epsilonTol` counts as the end. `parallel` is set to whether the tolerance is greater than the squared sine of their
/// angle (or that one has no length); such pairs meet only where they overlap or touch, and the first common point
/// along the first segment is reported.
/// \param t         the parameter of the meeting point on the first segment, 0 at a0, 1 at a1; unchanged on a miss
/// \param meeting   the meeting point; unchanged on a miss
ZNGEOM_API bool doLineSegmentsIntersect(const Point2& a0, const Point2& a1, const Point2& b0, const Point2& b1,
                                        double& t, Point2& meeting, bool& parallel, double tol);

/// Whether the ray from `origin` along `direction` meets the segment a to b of the plane, ends included.
/// \param rayParam      the parameter on the ray, in lengths of `direction`, 0 or more; unchanged on a miss
/// \param segmentParam  the parameter on the segment, 0 at a, 1 at b; unchanged on a miss
/// \param parallel      as for two segments; a ray along the segment reports the first common point
ZNGEOM_API bool doesRayIntersectLineSegment(const Point2& origin, const Vector2& direction, const Point2& a,
                                            const Point2& b, double& rayParam, double& segmentParam, bool& parallel,
                                            double tol);

} // namespace znLinear
