/// Making a part of a surface smooth.
#pragma once

#include <vector>

#include "znGeom/foundation/threads/progress.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// Moves vertices to where the uniform bi-Laplacian vanishes, with all others fixed.
///
/// \param vertices  inside the mesh, with consecutive numbers
/// \param progress  a cancel leaves all where they are
void fairVertices(TopoMesh& mesh, const std::vector<TopoMeshVertex>& vertices, znUtil::Progress& progress);

} // namespace znGeom::internal
