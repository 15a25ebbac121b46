/// Sections of a mesh by parallel planes, as loose segments.
#pragma once

#include <deque>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/normal.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/planar/segment.h"

namespace znGeom {

/// The loose segments in which parallel planes cut the triangles of a mesh, for `MergeSegments` to join.
///
/// \param normal   valid; of all planes
/// \param heights  of the planes from the origin along the normal, ascending
/// \return the segments of each plane in the order of their triangles; none where it misses
///
/// Vertices and triangles are judged as `meshPlaneSection` does, so that the segments of a mesh without boundary meet
/// in closed outlines, and their ends are the same to the last bit where two triangles share an edge. Segments that
/// have no length in `float` are left out. Seen from the side to which the normal points, they run counter-clockwise
/// round what a mesh that faces outward encloses. About n log n in triangles, and linear in what is returned.
ZNGEOM_API zn::vector<std::deque<Segment>> meshPlaneSegments(const CompactMesh& mesh, const znLinear::Normal& normal,
                                                             const zn::vector<double>& heights);

} // namespace znGeom
