/// Selections: deriving the selected vertices from the selected triangles and the reverse, and growing them.
#pragma once

#include <deque>

#include "znGeom/foundation/linear/proj_matrix.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace znGeom {

/// Works on a pair of selections, of triangles and of vertices: the mesh's own, or a pair of the caller's. The mesh's
/// listeners are not notified, since the mesh stays as it is.
///
/// Keeps the mesh's arrays as they were when it was made: make a new one after a change of the mesh. Each call first
/// resizes both selections to the mesh's counts: old bits stay, and new ones are clear. Each function says below
/// whether it replaces a selection or adds to it. All run on the calling thread; linear unless said otherwise.
class ZNGEOM_API MeshSelect
{
public:
    /// \param adjTris  built from the mesh by `meshAdjTris`
    MeshSelect(CompactMesh& mesh, const MeshAdjTris& adjTris);
    MeshSelect(const CompactMesh& mesh, const MeshAdjTris& adjTris, BitVector& triangles, BitVector& vertices);

    /// Adds the vertices that appear within a polygon on the screen, by the even-odd rule.
    /// \param matrix   from space to the screen; positions are divided by w, and one with w = 0 is never within it
    /// \param polygon  the corners, by x and y, closed automatically; fewer than three enclose nothing
    ///
    /// Every vertex is tested with every side of the polygon.
    void selectVertices(const znLinear::ProjMatrix& matrix, const zn::vector<znLinear::Point>& polygon);

    /// Replaces the triangles by those with at least `minCorners` selected corners, counted corner by corner.
    void selectTrianglesFromVertices(int minCorners);
    /// Replaces the triangles by those with any selected corner.
    void selectAllTrianglesFromVertices();
    /// Replaces the vertices by the corners of the selected triangles.
    void selectVerticesFromTriangles();
    /// Adds all triangles that are connected to the selected ones through vertices; with `oneStep` only those that
    /// share a vertex with one that was selected before.
    void selectTrianglesRecursive(bool oneStep);
    /// Replaces the triangles by their complement.
    void invertTriangleSelection();
    /// Adds the triangles around places of the mesh: around a vertex, around both ends of an edge, or around all
    /// corners of a triangle, by what the place lies on within `epsilonTol`. Invalid coordinates are skipped.
    void selectAffectedTriangles(const std::deque<MeshCoord>& coords);

    BitVector& getSelectedVertices() const;
    BitVector& getSelectedTriangles() const;

private:
    void resizeSelections() const;
    void replaceTriangles(int minCorners);
    void addTrianglesAround(int vertex);
    void addTrianglesAt(const MeshCoord& coord);

    const CompactMesh* m_mesh;
    const MeshAdjTris* m_adjTris;
    BitVector* m_selectedTriangles;
    BitVector* m_selectedVertices;
    const MeshTriangle* m_triangles;
    const MeshVertex* m_vertices;
};

} // namespace znGeom
