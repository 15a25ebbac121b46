/// Walks over a half-edge mesh, step by step and for `for`: the sides of a face, the fan of a vertex, all half-edges
/// that leave it, the lists.
///
///     for (const TopoMeshEdge side : sidesOf(face)) ...
///     for (const TopoMeshEdge spoke : fanOf(vertex)) if (isWanted(spoke)) break;
///     for (const TopoMeshFace face : facesOf(mesh)) ...
///
/// All ranges are views and take no memory. A range looks one step ahead: the body may change or remove the element
/// that it is given, but not the one that comes after it.
#pragma once

#include <iterator>

#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// The vertex at which a half-edge ends.
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

/// The last outgoing half-edge of the fan of `e`; on a closed fan the one before `e`. Linear in the fan.
inline TopoMeshEdge fanEnd(TopoMeshEdge e)
{
    TopoMeshEdge last = e;
    for (TopoMeshEdge step = nextAround(e); step && step != e; step = nextAround(step)) last = step;
    return last;
}

/// The first outgoing half-edge of the fan of `e`; on a closed fan `e` itself. Linear in the fan.
inline TopoMeshEdge fanBegin(TopoMeshEdge e)
{
    TopoMeshEdge first = e;
    for (TopoMeshEdge step = prevAround(e); step; step = prevAround(step)) {
        if (step == e) return e;
        first = step;
    }
    return first;
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

/// The elements from a first one on, each the step `Next` after the one before, until there is none or the first one
/// comes again.
template <typename Handle, Handle (*Next)(Handle)>
class TopoRange
{
public:
    class Iterator
    {
    public:
        using value_type = Handle;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        explicit Iterator(Handle first) : m_first(first), m_at(first) { lookAhead(); }
        Handle operator*() const { return m_at; }
        Iterator& operator++()
        {
            m_at = m_ahead;
            lookAhead();
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const Iterator& it, std::default_sentinel_t) { return !it.m_at; }

    private:
        void lookAhead()
        {
            m_ahead = m_at ? Next(m_at) : Handle();
            if (m_ahead == m_first) m_ahead = {};
        }

        Handle m_first, m_at, m_ahead;
    };

    explicit TopoRange(Handle first) : m_first(first) {}
    Iterator begin() const { return Iterator(m_first); }
    std::default_sentinel_t end() const { return {}; }
    bool empty() const { return !m_first; }

private:
    Handle m_first;
};

/// The steps of the ranges below.
namespace topoStep {

inline TopoMeshVertex nextVertex(TopoMeshVertex v) { return v->next; }
inline TopoMeshEdge nextEdge(TopoMeshEdge e) { return e->listNext; }
inline TopoMeshFace nextFace(TopoMeshFace f) { return f->next; }
inline TopoMeshEdge nextSide(TopoMeshEdge e) { return e->next; }
inline TopoMeshEdge nextSpoke(TopoMeshEdge e) { return nextAround(e); }
inline TopoMeshEdge nextOutgoing(TopoMeshEdge e)
{
    return e->outNext < 0 ? TopoMeshEdge() : TopoMeshEdge(TopoBlock::numbered(e.record(), e->outNext));
}

inline TopoMeshEdge firstOutgoing(TopoMeshVertex v)
{
    return v->edge ? TopoMeshEdge(TopoBlock::numbered(v->edge.record(), v->firstOut)) : TopoMeshEdge();
}

} // namespace topoStep

using TopoVertexRange = TopoRange<TopoMeshVertex, topoStep::nextVertex>;
using TopoEdgeRange = TopoRange<TopoMeshEdge, topoStep::nextEdge>;
using TopoFaceRange = TopoRange<TopoMeshFace, topoStep::nextFace>;
using TopoSideRange = TopoRange<TopoMeshEdge, topoStep::nextSide>;
using TopoFanRange = TopoRange<TopoMeshEdge, topoStep::nextSpoke>;
using TopoOutgoingRange = TopoRange<TopoMeshEdge, topoStep::nextOutgoing>;

/// The three lists, in order of creation.
inline TopoVertexRange verticesOf(const TopoMesh& mesh) { return TopoVertexRange(mesh.firstVertex()); }
inline TopoEdgeRange edgesOf(const TopoMesh& mesh) { return TopoEdgeRange(mesh.firstEdge()); }
inline TopoFaceRange facesOf(const TopoMesh& mesh) { return TopoFaceRange(mesh.firstFace()); }

/// The half-edges of a face, from its first one on.
inline TopoSideRange sidesOf(TopoMeshFace face) { return TopoSideRange(face->edge); }

/// The outgoing half-edges of one fan, from its beginning on: of `e`, or of the `edge` of a vertex. A closed fan begins
/// with that half-edge itself.
inline TopoFanRange fanOf(TopoMeshEdge e) { return TopoFanRange(fanBegin(e)); }
inline TopoFanRange fanOf(TopoMeshVertex v) { return TopoFanRange(v->edge ? fanBegin(v->edge) : TopoMeshEdge()); }

/// All half-edges that leave a vertex, of all fans that touch there, the newest first.
inline TopoOutgoingRange outgoingOf(TopoMeshVertex v) { return TopoOutgoingRange(topoStep::firstOutgoing(v)); }

/// Whether a half-edge runs between two vertices, one way or the other. Looks round the one that fewer leave.
ZNGEOM_API bool areJoined(TopoMeshVertex a, TopoMeshVertex b);

} // namespace znGeom
