#include "znGeom/repair/internal/patch_edges.h"

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

void PatchEdges::insert(TopoMeshEdge e)
{
    if (indexOf(e) >= m_edges.size()) {
        m_edges.resize(indexOf(e) + 1);
        m_isOpen.resize(m_edges.size());
    }
    m_edges[indexOf(e)] = e;
    m_isOpen[indexOf(e)] = true;
}

void PatchEdges::reopen(TopoMeshEdge e)
{
    if (isIn(e))
        m_isOpen[indexOf(e)] = true;
    else if (e->twin && isIn(e->twin))
        m_isOpen[indexOf(e->twin)] = true;
}

bool PatchEdges::relax(TopoMeshEdge e)
{
    bool isSettled = false;
    MeshEdgeSwapper::minimizeOppositeAngleSum(e, isSettled);
    const bool swapped = !isSettled && m_mesh.swapEdge(e);
    if (swapped)
        for (const TopoMeshEdge side : {e->next, e->prev, e->twin->next, e->twin->prev}) reopen(side);
    // What stands in the way of a swap may be far from the edge: it stays open.
    m_isOpen[indexOf(isIn(e) ? e : e->twin)] = !isSettled && !swapped;
    return swapped;
}

/// \return the number of swaps
int PatchEdges::passOnce()
{
    int count = 0;
    for (size_t i = 0; i < m_edges.size(); ++i)
        if (m_isOpen[i]) count += relax(m_edges[i]);
    return count;
}

void PatchEdges::relaxAll(MeshEdgeSwapper& swapper)
{
    constexpr int patience = 100; // then it may be going round in circles, which the general passes notice
    for (int pass = 0; pass < patience; ++pass)
        if (passOnce() == 0) return;
    zn::vector<TopoMeshEdge> edges;
    for (const TopoMeshEdge e : m_edges)
        if (e) edges.append(e);
    meshSwapEdgesRepeatedly(m_mesh, edges, swapper);
}

} // namespace znGeom::internal
