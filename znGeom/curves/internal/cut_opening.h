/// Opening edges along curves, and making triangles of what dividing has left.
#pragma once

#include "znGeom/curves/mesh_cut.h"
#include "znGeom/foundation/mesh/bit_vector.h"

namespace znGeom::internal {

/// The edges along curves, which are opened pass by pass.
class CutOpening
{
public:
    /// Collects the edges that join consecutive points, which are vertices by now; pairs without one are counted as
    /// skipped.
    CutOpening(TopoMesh& mesh, TopoMeshCurves& curves, MeshCutAccount& account);

    /// \return false after a cancel, which leaves some edges closed
    bool open(znUtil::Progress& progress);
    /// The vertices at both ends of what was opened, on both sides; in order.
    zn::vector<TopoMeshVertex> rim() const;

private:
    bool openInPasses(znUtil::Progress& progress);
    void openEdge(TopoMeshEdge e);
    TopoMeshEdge partnerAt(TopoMeshVertex v, TopoMeshEdge e) const;

    TopoMesh& m_mesh;
    MeshCutAccount& m_account;
    zn::vector<TopoMeshEdge> m_edges;  ///< the first halves of pairs
    zn::vector<TopoMeshEdge> m_opened; ///< both halves
    BitVector m_isCut;                 ///< half-edges, by number
};

/// Divides a face into triangles along its flattest triangulation that repeats no edge, where there is one.
void triangulateFace(TopoMesh& mesh, TopoMeshFace face);

} // namespace znGeom::internal
