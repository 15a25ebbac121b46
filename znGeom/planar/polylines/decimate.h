/// Polylines with fewer vertices.
#pragma once

#include "znGeom/planar/polylines/polyline.h"

namespace znGeom {

/// Takes vertices out of a line, always the one that it hurts least, for as long as this stays below a tolerance.
///
/// \param tolerance  in world units. Above 0, inner vertices of straight pieces go; otherwise nothing changes
///
/// What the removal of a vertex costs is the greatest distance of all vertices of the given line between its two
/// neighbours, those that are gone already among them, from the infinite line through the neighbours; from the
/// neighbours themselves where they are one place. So every vertex removed lies within the tolerance of the line
/// through its two neighbours in the result, however many there were. The first and the last vertex stay, the
/// parameters stay as they were, and of equal costs the lower vertex goes first. A cost that is no more than rounding
/// counts as 0: 1e-13 of the diagonal of the line's box and 1e-15 of the distance of its far corners from the origin,
/// unless the tolerance is as small as that. Vertices that are not finite stay, as do their neighbours.
///
/// About n log n on lines that wander, on straight ones that go one way, however they lie, and with all vertices in one
/// place: a million vertices take less than half a second. Where very many costs are exactly equal and above rounding,
/// the square of the vertices taken out in a row: on a zigzag or steps of one height throughout along an axis, on a
/// line that goes back and forth between two places, or in no order along a straight one. 100 bytes a vertex. The
/// greedy order is that of Visvalingam, Whyatt, "Line generalisation by repeated elimination of points" (1993), with
/// distances for areas.
ZNGEOM_API void decimate(Polyline& line, double tolerance);

} // namespace znGeom
