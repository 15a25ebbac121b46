/// Convex hulls of points in the plane.
///
/// All decisions are exact: no point lies outside of a hull, and a hull turns to the left at each of its vertices, by
/// however little, whatever the input. The result depends on the input alone. All run on the calling thread.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/planar/polylines/polyline.h"
#include "znGeom/planar/polylines/polyline_2d.h"

namespace znGeom {

/// Finds the vertices of the convex hull of points.
///
/// \param hull  indices into `points`, counter-clockwise. The first is the lowest point, of equally low ones that with
///              the largest x. Points on a side of the hull are not in it. Of points in one place it has that with the
///              highest index, but first comes the lowest index in its place. What it held before is gone
/// \return whether the hull has more than one vertex: false where all points lie in one place. Fewer than three points
///         are not looked at: the hull is all of them, and the answer true, also for none
///
/// Points with a coordinate that is not finite are left out; if nothing remains, the hull is empty and the answer
/// false. Points well inside an octagon of extreme points are ruled out in one pass (Akl, Toussaint, "A fast convex
/// hull algorithm", 1978). What remains is sorted, n log n at worst, and scanned upwards for the chains on both sides
/// (Andrew, "Another efficient algorithm for convex hulls in two dimensions", 1979).
ZNGEOM_API bool convexHull2d(const zn::vector<znLinear::Point2>& points, zn::vector<int>& hull);

/// The same, as points. When the answer is false, `hull` is left as it was. It may be `points` itself.
ZNGEOM_API bool convexHull2d(const zn::vector<znLinear::Point2>& points, zn::vector<znLinear::Point2>& hull);

/// The same for the vertices of lines, none of them null, as if they were one array of points. Of lines in space only
/// x and y are read; the hull lies in the plane z = 0.
ZNGEOM_API bool convexHull2d(const zn::vector<const Polyline*>& polylines, zn::vector<znLinear::Point>& hull);
ZNGEOM_API bool convexHull2d(const zn::vector<const Polyline2d*>& polylines, zn::vector<znLinear::Point>& hull);

} // namespace znGeom
