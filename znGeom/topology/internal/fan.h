/// Steps round a vertex and along chains of half-edges.
#pragma once

#include "znGeom/topology/topo_handles.h"

namespace znGeom {

inline TopoMeshVertex endOf(TopoMeshEdge e) { return e->next->origin; }

/// The outgoing half-edge after `e` at its origin, or null at the end of an open fan. Halves of a pair may run the same
/// way; the fan ends there too.
inline TopoMeshEdge nextAround(TopoMeshEdge e)
{
    if (!e->twin) return {};
    const TopoMeshEdge next = e->twin->next;
    return next->origin == e->origin ? next : TopoMeshEdge();
}

/// The outgoing half-edge before `e` at its origin, or null at the beginning of an open fan.
inline TopoMeshEdge prevAround(TopoMeshEdge e)
{
    const TopoMeshEdge prev = e->prev->twin;
    return prev && prev->origin == e->origin ? prev : TopoMeshEdge();
}

/// The last outgoing half-edge of the fan of `e`; on a closed fan the one before `e`.
inline TopoMeshEdge fanEnd(TopoMeshEdge e)
{
    TopoMeshEdge last = e;
    for (TopoMeshEdge step = nextAround(e); step && step != e; step = nextAround(step)) last = step;
    return last;
}

/// The first outgoing half-edge of the fan of `e`; on a closed fan `e` itself.
inline TopoMeshEdge fanBegin(TopoMeshEdge e)
{
    TopoMeshEdge first = e;
    for (TopoMeshEdge step = prevAround(e); step; step = prevAround(step)) {
        if (step == e) return e;
        first = step;
    }
    return first;
}

/// Calls `visit(outgoing)` for the fan of `e` from its beginning on.
template <typename Visit>
void forFan(TopoMeshEdge e, const Visit& visit)
{
    const TopoMeshEdge first = fanBegin(e);
    TopoMeshEdge step = first;
    do {
        const TopoMeshEdge next = nextAround(step); // the visitor may change the half-edge that it is given
        visit(step);
        step = next;
    } while (step && step != first);
}

/// The boundary half-edge that leaves the origin of `e`, in its fan; null in a closed fan.
inline TopoMeshEdge boundaryOut(TopoMeshEdge e)
{
    const TopoMeshEdge last = fanEnd(e);
    return last->twin ? TopoMeshEdge() : last;
}

/// The boundary half-edge that arrives there.
inline TopoMeshEdge boundaryIn(TopoMeshEdge e)
{
    const TopoMeshEdge arriving = fanBegin(e)->prev;
    return arriving->twin ? TopoMeshEdge() : arriving;
}

inline void link(TopoMeshEdge before, TopoMeshEdge after)
{
    before->next = after;
    after->prev = before;
}

} // namespace znGeom
