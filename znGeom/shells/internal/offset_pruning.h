/// Removing offset vertices that came too close or whose triangles turned over.
#pragma once

#include <vector>

#include "znGeom/foundation/containers/stamp_table.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/shells/internal/offset_shell.h"
#include "znGeom/shells/offset.h"

namespace znGeom::internal {

/// Removes one vertex after another from a half-edge mesh, and tells at which vertices triangles have changed.
class OffsetRemoval
{
public:
    /// \param changed  by numbers of vertices; gets those at which triangles change
    OffsetRemoval(TopoMesh& mesh, BitVector& changed);

    /// Swaps the edges of a vertex away down to three, deletes it, and improves the swapped edges. A failure leaves
    /// what was swapped. False at once where the triangles around the vertex are not one closed fan.
    bool remove(TopoMeshVertex vertex);

private:
    bool swapDownToThree(TopoMeshVertex vertex);
    void improve();
    bool swap(TopoMeshEdge e);

    TopoMesh& m_mesh;
    BitVector& m_changed;
    zn::StampTable m_isSwapped; ///< half-edges that were swapped away from the vertex
    std::vector<TopoMeshEdge> m_queue;
};

/// Prunes the copy of a shell as it was made.
/// \param leastCosine  of the angle between a triangle that counts as turned over and the normal of the source
/// \param kept         replaced: the vertices of the source whose copies are left
MeshOffsetPruning pruneOffset(TopoMesh& mesh, const OffsetShell& shell, const BitVector& tooClose, double leastCosine,
                              BitVector& kept);

} // namespace znGeom::internal
