/// Surfaces at a distance, and shells, for the commands `offset` and `shell`.
#pragma once

#include <cstddef>
#include <vector>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/shells/offset.h"

namespace tool {

/// What came of an offset.
struct OffsetFindings
{
    znGeom::MeshOffsetPruning pruning;
    /// Between the two surfaces: of the distances from the vertices of each to the other. Infinite where one is empty.
    double smallestWall = 0, largestWall = 0;
    std::size_t crossings = 0; ///< pairs of triangles of the result
    std::vector<int> crossing; ///< its triangles that cross others, ascending
};

/// Replaces a mesh by the copy of its surface at a distance, which faces as the mesh does, or by the shell between the
/// two, which faces away from its inside. Vertices that no triangle uses go. The offset itself sees no cancel: Ctrl-C
/// then ends the process.
///
/// \param outward  how far the copy lies in front of the surface; behind it where this is negative
/// \return the mesh may be empty or not finite then
OffsetFindings offsetSurface(znGeom::CompactMesh& mesh, double outward, bool isShell, znUtil::Progress& progress);

} // namespace tool
