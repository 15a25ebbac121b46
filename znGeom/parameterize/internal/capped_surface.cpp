#include "znGeom/parameterize/internal/capped_surface.h"

#include <algorithm>

namespace znGeom::internal {

namespace {

/// The vertex at which a side of a triangle begins; corners are counted through all triangles.
int vertexAt(const CompactMesh& mesh, int corner) { return mesh.getTrianglesRaw()[corner]; }

} // namespace

bool CappedSurface::build(const CompactMesh& mesh, znUtil::Progress& progress)
{
    m_numTriangles = mesh.getNumTriangles();
    znUtil::Progress phase;
    progress.subPhase(0.5, phase);
    if (!meshEdgeSides(mesh, phase, m_sides) || !isSurface(mesh)) return false;
    makeEdges(mesh, numberNodes());
    addCaps();
    if (progress.cancelled()) return false;
    findComponents();
    progress.set(1.0);
    return !progress.cancelled();
}

bool CappedSurface::isSurface(const CompactMesh& mesh) const
{
    const MeshTriangle* triangles = mesh.getTriangles();
    if (std::any_of(triangles, triangles + m_numTriangles, repeatsVertex)) return false;
    for (int edge = 0; edge < m_sides.getNumEdges(); ++edge) {
        const std::span<const int> sides = m_sides.sides(edge);
        if (sides.size() > 2) return false;
        if (sides.size() == 2 && vertexAt(mesh, sides[0]) == vertexAt(mesh, sides[1])) return false;
    }
    return true;
}

zn::DisjointSets CappedSurface::cornerGroups(const zn::vector<bool>& isOpen) const
{
    zn::DisjointSets groups(3 * m_numTriangles);
    for (int edge = 0; edge < m_sides.getNumEdges(); ++edge) {
        const std::span<const int> sides = m_sides.sides(edge);
        if (sides.size() < 2 || isOpen[edge]) continue;
        groups.unite(sides[0], cornerAtSideEnd(sides[1]));
        groups.unite(sides[1], cornerAtSideEnd(sides[0]));
    }
    return groups;
}

/// \return the node of each corner
zn::vector<int> CappedSurface::numberNodes()
{
    zn::DisjointSets fans = cornerGroups(zn::vector<bool>(m_sides.getNumEdges(), false));
    zn::vector<int> nodes(fans.size());
    m_numNodes = 0;
    for (int corner = 0; corner < fans.size(); ++corner) {
        const int lowest = fans.find(corner);
        nodes[corner] = lowest == corner ? m_numNodes++ : nodes[lowest];
    }
    return nodes;
}

void CappedSurface::makeEdges(const CompactMesh& mesh, const zn::vector<int>& nodeOfCorner)
{
    const int numEdges = m_sides.getNumEdges();
    m_edges.setSize(numEdges);
    zn::vector<int> pairs;
    pairs.reserve(4 * numEdges);
    const MeshVertex* vertices = mesh.getVertices();
    for (int i = 0; i < numEdges; ++i) {
        const std::span<const int> sides = m_sides.sides(i);
        const int start = sides[0], end = cornerAtSideEnd(start);
        Edge& edge = m_edges[i];
        edge.nodes[0] = nodeOfCorner[start];
        edge.nodes[1] = nodeOfCorner[end];
        edge.faces[0] = sides[0] / 3;
        edge.faces[1] = sides.size() == 2 ? sides[1] / 3 : -1;
        const MeshVertex &from = vertices[vertexAt(mesh, start)], &to = vertices[vertexAt(mesh, end)];
        const bool hasLength = sides.size() == 2 && isFinite(from) && isFinite(to);
        edge.length = hasLength ? distance(from.asPoint(), to.asPoint()) : 0.0;
        for (const int node : edge.nodes) {
            pairs.append(node);
            pairs.append(i);
        }
    }
    m_edgesAt.assignFromPairs(m_numNodes, pairs.size() / 2, pairs.data());
}

/// At each node there is one border edge coming and one going, or none: what hangs together is a border.
void CappedSurface::addCaps()
{
    zn::DisjointSets borders(m_numNodes);
    for (const Edge& edge : m_edges)
        if (edge.faces[1] < 0) borders.unite(edge.nodes[0], edge.nodes[1]);
    zn::vector<int> caps(m_numNodes, -1);
    m_numFaces = m_numTriangles;
    for (Edge& edge : m_edges) {
        if (edge.faces[1] >= 0) continue;
        int& cap = caps[borders.find(edge.nodes[0])];
        if (cap < 0) cap = m_numFaces++;
        edge.faces[1] = cap;
    }
}

void CappedSurface::findComponents()
{
    zn::DisjointSets parts(m_numNodes);
    for (const Edge& edge : m_edges) parts.unite(edge.nodes[0], edge.nodes[1]);
    m_componentOf.setSize(m_numNodes);
    zn::vector<int> euler;
    for (int node = 0; node < m_numNodes; ++node) {
        const int lowest = parts.find(node);
        if (lowest == node) euler.append(0);
        m_componentOf[node] = lowest == node ? euler.size() - 1 : m_componentOf[lowest];
        ++euler[m_componentOf[node]];
    }
    m_closed = zn::vector<bool>(euler.size(), true);
    zn::vector<bool> isCounted(m_numFaces, false);
    for (const Edge& edge : m_edges) {
        const int component = m_componentOf[edge.nodes[0]];
        --euler[component];
        for (const int face : edge.faces) {
            if (!isCounted[face]) ++euler[component];
            isCounted[face] = true;
        }
        if (edge.faces[1] >= m_numTriangles) m_closed[component] = false;
    }
    m_genera.clear();
    for (const int number : euler) m_genera.append((2 - number) / 2);
}

} // namespace znGeom::internal
