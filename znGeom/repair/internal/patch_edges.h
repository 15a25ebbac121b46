/// The edges inside a patch, which are swapped while it is refined.
#pragma once

#include <cstdint>
#include <vector>

#include "znGeom/topology/edge_swapper.h"

namespace znGeom::internal {

/// One half of each edge that may be swapped. They are swapped by `MeshEdgeSwapper::minimizeOppositeAngleSum`, in the
/// same order and with the same result as by passes over all of them, but an edge is looked at again only after one
/// of the two triangles on it has changed.
class PatchEdges
{
public:
    /// \param firstNumber  no half-edge of the patch has a lower one
    PatchEdges(TopoMesh& mesh, int firstNumber) : m_mesh(mesh), m_firstNumber(firstNumber) {}

    /// For a half-edge neither half of which is in.
    void insert(TopoMeshEdge e);
    /// Whether one of its halves is in.
    bool has(TopoMeshEdge e) const { return isIn(e) || (e->twin && isIn(e->twin)); }

    /// To be called when a triangle on an edge has changed.
    void reopen(TopoMeshEdge e);
    /// Swaps an edge that is in if that makes the angles across smaller.
    bool relax(TopoMeshEdge e);
    /// Does this with all, in the order of their numbers, until none is swapped any more.
    void relaxAll(MeshEdgeSwapper& swapper);

private:
    size_t indexOf(TopoMeshEdge e) const { return static_cast<size_t>(e.number() - m_firstNumber); }
    bool isIn(TopoMeshEdge e) const
    {
        return e.number() >= m_firstNumber && indexOf(e) < m_edges.size() && m_edges[indexOf(e)];
    }
    int passOnce();

    TopoMesh& m_mesh;
    int m_firstNumber;
    std::vector<TopoMeshEdge> m_edges;  ///< by number; null for those that are not in
    std::vector<std::uint8_t> m_isOpen; ///< whether it is to be looked at
};

} // namespace znGeom::internal
