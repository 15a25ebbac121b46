#include "znGeom/simplify/internal/link_test.h"

#include <algorithm>

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

VertexFans::VertexFans(const TopoMesh& mesh)
    : m_single(static_cast<size_t>(mesh.vertexNumbers())), m_open(m_single.size())
{
    for (const TopoMeshVertex v : verticesOf(mesh)) update(v);
}

void VertexFans::update(TopoMeshVertex v)
{
    if (!v->edge) return;
    int size = 0;
    const TopoMeshEdge begin = fanBegin(v->edge);
    for ([[maybe_unused]] const TopoMeshEdge spoke : TopoFanRange(begin)) ++size;
    m_single[static_cast<size_t>(v.number())] = size == v.valence();
    m_open[static_cast<size_t>(v.number())] = !begin->prev->twin;
}

void LinkTest::setCentre(TopoMeshVertex centre)
{
    m_centre = centre;
    m_ring.clear();
    if (!centre->edge || !m_fans.isSingle(centre)) return;
    const TopoMeshEdge begin = fanBegin(centre->edge);
    for (const TopoMeshEdge spoke : TopoFanRange(begin)) m_ring.push_back(endOf(spoke));
    if (m_fans.isOpen(centre)) m_ring.push_back(begin->prev->origin);
    const std::uint32_t once = m_marks.next(), twice = m_doubled.next();
    for (const TopoMeshVertex v : m_ring)
        if (!m_marks.mark(v.number(), once)) m_doubled.mark(v.number(), twice);
}

bool LinkTest::allows(TopoMeshEdge e) const
{
    const TopoMeshVertex origin = e->origin, end = endOf(e);
    const TopoMeshEdge t = e->twin;
    if (origin == end || !m_fans.isSingle(origin) || !m_fans.isSingle(end)) return false;
    if (t && (t->face == e->face || t->origin != end)) return false;
    if (m_doubled.isMarked((origin == m_centre ? end : origin).number())) return false;
    const TopoMeshVertex a = e->prev->origin, b = t ? t->prev->origin : TopoMeshVertex();
    if (a == b) return false;
    if (t && a.valence() > 1 && b.valence() > 1 && m_fans.isOpen(origin) && m_fans.isOpen(end)) return false;
    return !sharesFurther(e, a, b);
}

/// Whether the ends have neighbours in common other than the two third corners.
bool LinkTest::sharesFurther(TopoMeshEdge e, TopoMeshVertex a, TopoMeshVertex b) const
{
    constexpr int manySpokes = 64;
    const TopoMeshVertex end = endOf(e);
    const TopoMeshEdge spoke = e->origin == m_centre ? e->next : e;
    const auto isExcepted = [&](TopoMeshVertex v) { return v == a || v == b || v == end; };
    if (spoke->origin.valence() > manySpokes)
        return std::any_of(m_ring.begin(), m_ring.end(), [&](TopoMeshVertex v) {
            return !isExcepted(v) && v != spoke->origin && areJoined(v, spoke->origin);
        });
    const auto isShared = [&](TopoMeshVertex v) { return m_marks.isMarked(v.number()) && !isExcepted(v); };
    const TopoMeshEdge begin = fanBegin(spoke);
    for (const TopoMeshEdge other : TopoFanRange(begin))
        if (isShared(endOf(other))) return true;
    return !begin->prev->twin && isShared(begin->prev->origin);
}

} // namespace znGeom::internal
