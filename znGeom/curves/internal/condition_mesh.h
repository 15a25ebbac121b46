/// Cleaning up next to a cut.
#pragma once

#include "znGeom/foundation/containers/tree.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/topology/edge_swapper.h"

namespace znGeom::internal {

/// Removes the slivers that a cut has left beside its boundary, by swaps and by taking out vertices, where the surface
/// stays as it is.
class ConditionMesh
{
public:
    /// \param candidates  the vertices on the new boundary, and their neighbours; those that are removed leave it
    /// \param removed     may be null; sent each vertex before it is deleted
    ConditionMesh(TopoMesh& mesh, zn::set<TopoMeshVertex>& candidates, znRTB::SignalArg<TopoMeshVertex>* removed);

    /// \param tolerance  how far the boundary may move
    void operator()(double tolerance);

private:
    void vetoFarAway(TopoMeshEdge e, bool& veto) const;
    int removeThin(double tolerance);
    bool removeVertex(TopoMeshVertex v);
    bool swapDownTo(TopoMeshVertex v, int valence, zn::vector<TopoMeshEdge>& swapped);
    bool swapOneSpoke(TopoMeshVertex v, zn::vector<TopoMeshEdge>& swapped);

    TopoMesh& m_mesh;
    zn::set<TopoMeshVertex>& m_candidates;
    BitVector m_isCandidate; ///< the same, by numbers
    znRTB::SignalArg<TopoMeshVertex>* m_removed;
    MeshEdgeSwapper m_mainSwapper, m_removalSwapper, m_lastSwapper;
};

} // namespace znGeom::internal
