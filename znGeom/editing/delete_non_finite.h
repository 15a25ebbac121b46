/// Deleting what has no place in space.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// Deletes the triangles that have a corner with a coordinate that is infinite or not a number, and the vertices that
/// only they use. Where there is such a triangle, vertices that are not finite and that no triangle uses go as well.
///
/// As `MeshDeleteSelected` does, with what that says of channels and selections, and one `TopologyChanged`; nothing
/// happens where all corners are finite. Linear; runs on the calling thread.
///
/// \return how many triangles were deleted
ZNGEOM_API int meshDeleteNonFinite(CompactMesh& mesh);

} // namespace znGeom
