/// Polygons in the plane.
#pragma once

#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// Whether a point lies within a polygon, by the even-odd rule: where the polygon covers itself twice is outside.
///
/// \param closedPolygon  x and y of each corner in order, the first corner again at the end
/// \param numPoints      the number of corners, the repeated one included; below 4 nothing is within
/// \return false also for a point with a NaN coordinate
///
/// Exact as far as products of `double` are, and the same for a side whichever way it runs: of polygons that tile the
/// plane, one alone holds each point, borders and corners included. Linear; literature: Hormann, Agathos, "The point
/// in polygon problem for arbitrary polygons" (2001).
ZNGEOM_API bool pointPolygonIntersect2D(const float* closedPolygon, int numPoints, float x, float y);

} // namespace znGeom
