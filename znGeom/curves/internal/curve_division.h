/// Dividing edges and faces until curves run along edges.
#pragma once

#include <unordered_map>

#include "znGeom/curves/curve_topology.h"

namespace znGeom::internal {

/// Divides edges and faces of a mesh of triangles so that consecutive points of curves are vertices joined by an edge.
class CurveDivision
{
public:
    CurveDivision(TopoMesh& mesh, MeshCurveTopology& topology);

    /// Once. \return false after a cancel, which leaves some points where they were
    bool divide(znUtil::Progress& progress);

    /// Faces that were divided, or whose sides were, in order.
    zn::vector<TopoMeshFace> touchedFaces() const;
    /// How many runs could not be brought on edges.
    int numSkipped() const { return m_numSkipped; }

private:
    using Node = TopoMeshCurve::Node;
    using Run = zn::vector<Node>;

    bool divideEdges(znUtil::Progress& progress);
    bool divideAtCrossings(znUtil::Progress& progress);
    bool divideAlongRuns(znUtil::Progress& progress);
    Run armFrom(const MeshCurveTopology::Use& use, bool forward) const;
    void divideAtCrossing(const MeshCurveTopology::IPoint& crossing);
    void divideAlong(const Run& run, TopoMeshFace whole);
    void cutThrough(TopoMeshFace piece, const Run& run, int numPoints, TopoMeshVertex to);
    bool divideAlongLoop(const Run& run, TopoMeshFace piece, TopoMeshFace whole);
    TopoMeshFace pieceOf(TopoMeshFace whole, TopoMeshVertex u, TopoMeshVertex w, const znLinear::Point& inside) const;
    TopoMeshFace wholeOf(TopoMeshFace piece) const;
    void addPiece(TopoMeshFace piece, TopoMeshFace whole);

    TopoMesh& m_mesh;
    MeshCurveTopology& m_topology;
    zn::vector<TopoMeshFace> m_faceAfter; ///< for each point of all curves the face of the segment that it begins
    std::unordered_map<int, TopoMeshFace> m_wholes; ///< the face from which a new one was cut, by number
    zn::vector<TopoMeshFace> m_touched;
    int m_numSkipped = 0;
};

} // namespace znGeom::internal
