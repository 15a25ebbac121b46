/// Removing one vertex from a half-edge mesh of triangles.
#pragma once

#include <array>
#include <vector>

#include "znGeom/scopes/modify_rep.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// Tries to remove a vertex, and can take that back. Keeps its memory from vertex to vertex.
class VertexRemoval
{
public:
    VertexRemoval(MeshModifyRep& scope, TopoMesh& mesh) : m_scope(scope), m_mesh(mesh) {}

    /// Swaps edges away from an interior vertex, deletes it, and improves the swapped edges. False, with everything as
    /// it was, where the surface would fold.
    bool remove(TopoMeshVertex vertex);

    /// The triangles that took the place of those around the vertex, apart from some that only the last swaps touched.
    const std::vector<std::array<znLinear::Point, 3>>& touchedTriangles();

    /// Takes the last removal back: the surface is as it was, with a new vertex in the place of the old one.
    void undo();

private:
    bool swapDownToThree(TopoMeshVertex vertex);
    bool swapLastOfFour(TopoMeshVertex vertex);
    void improve();
    void swapBack(std::vector<TopoMeshEdge>& edges);

    MeshModifyRep& m_scope;
    TopoMesh& m_mesh;
    std::vector<TopoMeshEdge> m_firstSwaps, m_secondSwaps;
    znLinear::Point m_position;
    TopoMeshFace m_face; ///< that of the last three neighbours
    std::vector<TopoMeshFace> m_touched;
    std::vector<std::array<znLinear::Point, 3>> m_triangles;
};

} // namespace znGeom::internal
