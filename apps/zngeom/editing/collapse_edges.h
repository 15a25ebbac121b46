/// Reducing by edge collapse, for the `reduce` command.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// Collapses edges until a part of the triangles is left. Corners that lose all their triangles go too; vertices that
/// had none stay. The collapses themselves see no cancel: Ctrl-C then ends the process.
///
/// \return how many triangles turned over: their normals point against those of the nearest places before
int collapseEdges(znGeom::CompactMesh& mesh, double fraction, znUtil::Progress& progress);

} // namespace tool
