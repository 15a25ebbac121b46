/// Cleaning up next to a cut.
#pragma once

#include <cstdint>
#include <optional>

#include "znGeom/curves/internal/pace.h"
#include "znGeom/foundation/containers/tree.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/topology/edge_swapper.h"

namespace znGeom::internal {

/// Swaps nothing any more after a cancel, so that passes over edges end.
class PacedSwapper : public MeshEdgeSwapper
{
public:
    /// \param numEdges  of one pass
    void begin(znUtil::Progress& progress, int numEdges);
    bool shouldSwap(TopoMeshEdge e) override;

private:
    std::optional<Pace> m_pace;
    std::int64_t m_numAsked = 0, m_numEdges = 0;
    bool m_goesOn = true;
};

/// Removes the slivers that a cut has left beside its boundary, by swaps and by taking out vertices, where the surface
/// stays as it is.
class ConditionMesh
{
public:
    /// \param candidates  the vertices on the new boundary, and their neighbours; those that are removed leave it
    /// \param removed     may be null; sent each vertex before it is deleted
    ConditionMesh(TopoMesh& mesh, zn::set<TopoMeshVertex>& candidates, znRTB::SignalArg<TopoMeshVertex>* removed);

    /// \param tolerance  how far the boundary may move
    /// \param progress   after a cancel what has been cleaned up stays so
    void operator()(double tolerance, znUtil::Progress& progress);

private:
    void vetoFarAway(TopoMeshEdge e, bool& veto) const;
    void swapRepeatedly(znUtil::Progress& progress);
    int removeThin(double tolerance, znUtil::Progress& progress);
    bool removeVertex(TopoMeshVertex v);
    bool swapDownTo(TopoMeshVertex v, int valence, zn::vector<TopoMeshEdge>& swapped);
    bool swapOneSpoke(TopoMeshVertex v, zn::vector<TopoMeshEdge>& swapped);

    TopoMesh& m_mesh;
    zn::set<TopoMeshVertex>& m_candidates;
    BitVector m_isCandidate; ///< the same, by numbers
    znRTB::SignalArg<TopoMeshVertex>* m_removed;
    PacedSwapper m_mainSwapper;
    MeshEdgeSwapper m_removalSwapper, m_lastSwapper;
};

} // namespace znGeom::internal
