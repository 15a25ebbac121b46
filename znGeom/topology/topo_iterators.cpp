#include "znGeom/topology/topo_iterators.h"

#include "znGeom/topology/topo_walks.h"

namespace znGeom {

void TopoMeshEdgeVertexIterator::next()
{
    if (edge != m_set || !m_begin->face || m_begin->origin != vertex) m_begin = edge;
    TopoMeshEdge step;
    if (direction == 1) {
        step = nextAround(edge);
        if (!step) {
            direction = 0;
            edge = m_begin;
        }
    }
    if (direction == 0) step = prevAround(edge);
    edge = m_set = step == m_begin ? TopoMeshEdge() : step;
}

void TopoMeshBoundaryIterator::reset(TopoMeshVertex vertex, bool forward)
{
    TopoMeshEdge arriving;
    getPrevNextEdges(vertex, arriving, edge);
    m_begin = edge;
    m_stepped = {};
    m_forward = forward;
}

TopoMeshEdge TopoMeshBoundaryIterator::nextEdge() const { return m_forward ? edge : boundaryIn(edge); }

void TopoMeshBoundaryIterator::next()
{
    m_stepped = nextEdge();
    // The next one is looked for in the fan at the far end of the half-edge stepped: other fans that touch there play
    // no part.
    edge = m_forward && m_stepped ? boundaryOut(m_stepped->next) : m_stepped;
    if (edge == m_begin) edge = {};
}

void TopoMeshBoundaryIterator::getPrevNextEdges(TopoMeshVertex vertex, TopoMeshEdge& prev, TopoMeshEdge& next)
{
    prev = next = {};
    if (!vertex->edge) return;
    prev = boundaryIn(vertex->edge);
    next = boundaryOut(vertex->edge);
    for (const TopoMeshEdge e : outgoingOf(vertex)) {
        if (prev || next) return;
        if (e->twin && e->prev->twin) continue;
        prev = boundaryIn(e);
        next = boundaryOut(e);
    }
}

} // namespace znGeom
