#include "znGeom/topology/topo_iterators.h"

#include "znGeom/topology/internal/fan.h"

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
    // The next one is looked for in the fan at the far end of the half-edge stepped, so that other fans that touch
    // there lead nobody astray.
    edge = m_forward && m_stepped ? boundaryOut(m_stepped->next) : m_stepped;
    if (edge == m_begin) edge = {};
}

void TopoMeshBoundaryIterator::getPrevNextEdges(TopoMeshVertex vertex, TopoMeshEdge& prev, TopoMeshEdge& next)
{
    prev = vertex->edge ? boundaryIn(vertex->edge) : TopoMeshEdge();
    next = vertex->edge ? boundaryOut(vertex->edge) : TopoMeshEdge();
}

} // namespace znGeom
