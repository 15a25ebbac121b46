/// Triangles that are wound against their neighbours.
#pragma once

#include <vector>

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/editing/duplicate_triangles.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

struct WindingDefects
{
    /// What has to be turned over, ascending: in each piece the smaller one of the two sets that disagree. Empty for a
    /// mesh that can't be wound consistently.
    std::vector<int> flipped;
    /// Triangles in which a one-sided strip runs, ascending; empty where there is none.
    std::vector<int> oneSided;
};

/// Orienting turns over whatever is wound against the first triangle of a piece. Where that is more than half of the
/// piece, it is the others that should have been: exchanges the two sets.
/// \param isTurned  per triangle of the mesh
void takeSmallerSets(const znGeom::CompactMesh& mesh, std::vector<bool>& isTurned);

/// Looks at the pieces that remain without bad triangles and without those on edges of three or more: at such edges
/// neighbours can't agree.
/// \param sides  of this mesh
/// \param bad    of this mesh
WindingDefects findWindingDefects(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides,
                                  const znGeom::MeshDuplicateTrisResult& bad);

} // namespace tool
