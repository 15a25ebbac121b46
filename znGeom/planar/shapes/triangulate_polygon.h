/// Triangulating a closed loop of points in space.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Closes a loop with the best of all its triangulations: the one whose sharpest fold is the flattest, and among equals
/// the one of least area. The loop may turn through space; it needs no plane, and no point is added.
///
/// \param polygon         the loop in order, three points or more; the last is joined to the first
/// \param triangles       receives three indices into `polygon` for each of the size - 2 triangles, ascending, so that
///                        they run round as the loop does. What it held is dropped
/// \param forbiddenEdges  which edges triangles must not have, or null: size * size bits, of which bit
///                        a * size + b stands for the way from a to b. A triangle (a, b, c), ascending, goes from a to
///                        b, from b to c, and from c back to a
/// \param progress        advanced, and asked for a cancel, once in a thousand steps; may be null. A loop of less than
///                        twenty points is done before the first of them
/// \return false after a cancel, with `triangles` empty. Fewer than three points give no triangles and true
///
/// A fold is judged by the cosine between the normals of two neighbouring triangles. Beyond an edge of the loop nothing
/// is known, and a triangle there counts as if it met its neighbour at a right angle: so folds of less than 90 degrees
/// are all the same, and area decides. A triangle whose area is below `epsilonTol` ranks with folds of 180 degrees, but
/// is used where there is no other way. So is a forbidden edge, as the last resort: where every triangle on an edge has
/// one, or leans on an edge of which this is true, the first triangle is taken. Where two choices are equal to the last
/// bit, the one of the lower index is taken. A loop that crosses itself, or lies on a line, is treated like any other.
///
/// Chords are judged one by one, each with the best that was found for the parts of the loop on either side of its
/// triangle; a choice that is worse there and better further on is not seen.
///
/// Cubic in time: a loop of a thousand points takes a third of a second. 20 bytes for each pair of points: 10 MB
/// then, 250 MB for five thousand. Runs on the calling thread. The recurrence of Barequet, Sharir, "Filling gaps in the
/// boundary of a polyhedron" (1995), with the weights of Liepa, "Filling holes in meshes" (2003).
ZNGEOM_API bool triangulatePolygon(const zn::vector<znLinear::Point>& polygon, zn::vector<int>& triangles,
                                   BitVector* forbiddenEdges, znUtil::Progress* progress);

} // namespace znGeom
