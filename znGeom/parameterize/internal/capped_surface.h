/// A mesh as a closed surface: its borders capped.
#pragma once

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom::internal {

/// The nodes, edges and faces of the closed surface that a mesh becomes when each border is capped by a face. A node is
/// a fan of triangles: a vertex at which several fans touch is as many nodes. Faces are the triangles, then the caps.
class CappedSurface
{
public:
    struct Edge
    {
        int nodes[2];
        int faces[2];  ///< the second may be a cap
        double length; ///< 0 along a border, which is open already, and where an end is not finite
    };

    /// \return false after a cancel, and for a mesh that is no oriented surface
    bool build(const CompactMesh& mesh, znUtil::Progress& progress);

    int numNodes() const { return m_numNodes; }
    int numFaces() const { return m_numFaces; }
    const zn::vector<Edge>& edges() const { return m_edges; }
    /// The edges at a node.
    std::span<const int> edgesAt(int node) const { return m_edgesAt.members(node); }
    /// Whether an edge has two triangles.
    bool isInner(int edge) const { return m_edges[edge].faces[1] < m_numTriangles; }

    /// The component of a node, numbered from 0.
    int componentOf(int node) const { return m_componentOf[node]; }
    int numComponents() const { return m_genera.size(); }
    int genusOf(int component) const { return m_genera[component]; }
    bool isClosed(int component) const { return m_closed[component]; }

    /// The corners of triangles that hang together around a vertex while certain edges are open.
    /// \param isOpen  one per edge
    zn::DisjointSets cornerGroups(const zn::vector<bool>& isOpen) const;

private:
    bool isSurface(const CompactMesh& mesh) const;
    zn::vector<int> numberNodes();
    void makeEdges(const CompactMesh& mesh, const zn::vector<int>& nodeOfCorner);
    void addCaps();
    void findComponents();

    int m_numTriangles = 0, m_numNodes = 0, m_numFaces = 0;
    MeshEdgeSides m_sides;
    zn::vector<Edge> m_edges;
    ArrayOfSets m_edgesAt;
    zn::vector<int> m_componentOf, m_genera;
    zn::vector<bool> m_closed;
};

} // namespace znGeom::internal
