#include "znGeom/simplify/internal/vertex_removal.h"

#include <algorithm>

#include "znGeom/topology/edge_swapper.h"
#include "znGeom/topology/internal/fold_over.h"
#include "znGeom/topology/internal/plain_fan.h"
#include "znGeom/topology/topo_iterators.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using znLinear::Point;

namespace {

/// Whether three neighbours are the corners of a triangle already: without the vertex there would be two, as at the tip
/// of a tetrahedron.
bool haveTriangle(TopoMeshVertex vertex)
{
    const TopoMeshEdge ring = vertex->edge->next;
    const TopoMeshVertex a = ring->origin, b = endOf(ring), c = endOf(vertex->edge->twin->next);
    for (const TopoMeshEdge e : outgoingOf(a)) {
        const TopoMeshVertex second = endOf(e), third = e->prev->origin;
        if ((second == b && third == c) || (second == c && third == b)) return true;
    }
    return false;
}

} // namespace

bool VertexRemoval::remove(TopoMeshVertex vertex)
{
    m_firstSwaps.clear();
    m_secondSwaps.clear();
    if (!isPlainFan(vertex) || !swapDownToThree(vertex) || haveTriangle(vertex)) {
        swapBack(m_firstSwaps);
        return false;
    }
    m_position = vertex.point();
    m_scope.removeVertex(vertex);
    m_face = m_mesh.deleteVertex(vertex);
    improve();
    return true;
}

/// The step goes before the swap: the half-edge that was just left is the one that goes.
bool VertexRemoval::swapDownToThree(TopoMeshVertex vertex)
{
    int valence = vertex.valence();
    for (TopoMeshEdgeVertexIterator spokes(vertex); valence > 3 && spokes.valid();) {
        const TopoMeshEdge spoke = spokes.edge;
        spokes.next();
        bool veto = false;
        MeshEdgeSwapper::preventFoldover(spoke, veto);
        if (veto || !m_mesh.swapEdge(spoke)) continue;
        --valence;
        m_firstSwaps.push_back(spoke);
    }
    return valence == 3 || (valence == 4 && swapLastOfFour(vertex));
}

/// Looks at the two triangles that stay when the vertex is gone, where the one at the vertex is no obstacle: it has no
/// area when the vertex lies between two of its neighbours, as on every flat grid.
bool VertexRemoval::swapLastOfFour(TopoMeshVertex vertex)
{
    for (const TopoMeshEdge spoke : fanOf(vertex)) {
        const TopoMeshVertex opposite = endOf(nextAround(nextAround(spoke)));
        if (foldsOver(opposite, endOf(spoke), spoke->prev->origin, spoke->twin->prev->origin)) continue;
        if (!m_mesh.swapEdge(spoke)) continue;
        m_firstSwaps.push_back(spoke);
        return true;
    }
    return false;
}

/// A pass that swaps nothing is the last: all further ones would find the same.
void VertexRemoval::improve()
{
    constexpr int mostPasses = 10;
    size_t before = 1;
    for (int pass = 0; pass < mostPasses && before != m_secondSwaps.size(); ++pass) {
        before = m_secondSwaps.size();
        for (const TopoMeshEdge e : m_firstSwaps) {
            bool veto = false;
            MeshEdgeSwapper::minimizeOppositeAngleSum(e, veto);
            if (!veto && m_mesh.swapEdge(e)) m_secondSwaps.push_back(e);
        }
    }
}

const std::vector<std::array<Point, 3>>& VertexRemoval::touchedTriangles()
{
    m_touched.assign(1, m_face);
    for (const TopoMeshEdge e : m_firstSwaps) m_touched.insert(m_touched.end(), {e->face, e->twin->face});
    std::sort(m_touched.begin(), m_touched.end());
    m_touched.erase(std::unique(m_touched.begin(), m_touched.end()), m_touched.end());
    m_triangles.clear();
    for (const TopoMeshFace face : m_touched) {
        const TopoMeshEdge e = face->edge;
        m_triangles.push_back({e->origin.point(), e->next->origin.point(), e->prev->origin.point()});
    }
    return m_triangles;
}

void VertexRemoval::undo()
{
    swapBack(m_secondSwaps);
    m_mesh.subdivideFace(m_face, m_position);
    swapBack(m_firstSwaps);
}

void VertexRemoval::swapBack(std::vector<TopoMeshEdge>& edges)
{
    for (; !edges.empty(); edges.pop_back()) m_mesh.swapEdge(edges.back());
}

} // namespace znGeom::internal
