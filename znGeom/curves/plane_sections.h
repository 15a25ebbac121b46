/// Sections of a mesh by planes side by side.
#pragma once

#include <deque>
#include <functional>

#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/planar/polylines/segment.h"

namespace znGeom {

/// The segments in which each of a number of parallel planes cuts triangles, loose: `MergeSegments` joins them.
///
/// \param plane    the first, valid; the others follow along its normal
/// \param step     world units from one plane to the next, above 0
/// \param visit    called for each plane with its number and its segments, in the order of the numbers. Those of a
///                 plane that misses are none. Around a solid they run counter-clockwise, seen from where the normal
///                 points to
/// \param progress a cancel ends it before the next plane
/// \return false after a cancel
///
/// Triangles are cut as by `meshPlaneSection`: vertices on a plane count as above it, and triangles with a corner that
/// is not finite are left out. Segments of triangles with a common edge have the same digits where they meet; those
/// without length are left out, and so are pairs on one another that run opposite ways, those of sheets that coincide.
/// So where edges have an even number of triangles, an even number of ends lies at each place.
///
/// Costs a sort of the triangles and what the planes cut. Runs on the calling thread.
ZNGEOM_API bool meshPlaneSections(const CompactMesh& mesh, const znLinear::Plane& plane, double step, int count,
                                  const std::function<void(int, const std::deque<Segment>&)>& visit,
                                  znUtil::Progress& progress);

} // namespace znGeom
