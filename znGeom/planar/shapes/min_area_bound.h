/// Rectangles of smallest area around points in the plane.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/planar/polylines/polyline.h"
#include "znGeom/planar/polylines/polyline_2d.h"

namespace znGeom {

/// A rectangle in the plane whose sides may have any direction. Its corners are stored in rows: c0, c1 is the base and
/// c2, c3 the side opposite, so that the border runs c0, c1, c3, c2 and back to c0.
struct Rect2
{
    znLinear::Point2 c0, c1, c2, c3;
};

/// Finds the rectangle of smallest area around points. One of its sides lies along a side of their convex hull.
///
/// \param rect   counter-clockwise along its border. c0 is its lowest or its leftmost corner, the one from which the
///               base leads further to the right. Points on a line give a rectangle without width, points in one place
///               four times that place. Unchanged when there is no point
/// \param ratio  null, or what becomes the area of the largest rectangle along a side of the hull over that of the
///               smallest: at least 1, and 1 where no choice mattered; infinite or not a number where rounding leaves
///               the smallest no area. The largest `float` for points on a line, 1 for points in one place; 0 when
///               there is no point
/// \return whether there is a point; those with a coordinate that is not finite do not count
///
/// Costs a convex hull, and one way round it with four fingers (Toussaint, "Solving geometric problems with the
/// rotating calipers", 1983). Of rectangles of the same area the first along the hull is taken. Holds all points up to
/// rounding. Runs on the calling thread.
ZNGEOM_API bool minAreaRect2d(const zn::vector<znLinear::Point2>& points, Rect2& rect, float* ratio = nullptr);

/// Moves the sides of a rectangle outwards, whatever way it lies, or inwards where the margin is below 0. One whose
/// base and height are both below `epsilonTol` becomes a square along the axes.
ZNGEOM_API void rectGrow(Rect2& rect, double margin);

/// Finds a rectangle around the vertices of lines, none of them null, that leaves room for what is drawn along them:
/// the smallest one, made wider by a margin, and by much more where it is a square.
///
/// \param margin  as for `rectGrow`, which comes last
/// \param rect    as `minAreaRect2d` gives it, but for squares: where no side differs by more than 1e-6 from their
///                mean, each corner first moves by half a side in x and in y, c0 down to the left, c1 to the right, c2
///                to the left and c3 to the right upwards, even if the square is turned. Unchanged when `ratio` is 0
/// \param ratio   as `minAreaRect2d` gives it; 0 when there is no vertex, or three or more that all lie in one place.
///                One or two vertices are taken as they are, even where they coincide or are not finite
///
/// Of lines in space only x and y are read.
ZNGEOM_API void minAreaBound(const zn::vector<const Polyline*>& polylines, double margin, Rect2& rect, float& ratio);
ZNGEOM_API void minAreaBound(const zn::vector<const Polyline2d*>& polylines, double margin, Rect2& rect, float& ratio);

} // namespace znGeom
