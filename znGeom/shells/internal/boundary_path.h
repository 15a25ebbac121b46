/// Paths along the boundary of a half-edge mesh. Steps stay within the fan at which they arrive: other fans that touch
/// there play no part.
#pragma once

#include <algorithm>
#include <limits>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/topology/topo_iterators.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

/// The boundary half-edge after one, or before it; null where there is none.
inline TopoMeshEdge nextOnBoundary(TopoMeshEdge e) { return boundaryOut(e->next); }
inline TopoMeshEdge prevOnBoundary(TopoMeshEdge e) { return boundaryIn(e); }

/// The boundary half-edges that leave a vertex (`forward`) or arrive there: first that of the walks, then those of
/// other fans.
inline zn::vector<TopoMeshEdge> boundaryAt(TopoMeshVertex vertex, bool forward)
{
    zn::vector<TopoMeshEdge> found;
    TopoMeshEdge arriving, leaving;
    TopoMeshBoundaryIterator::getPrevNextEdges(vertex, arriving, leaving);
    if (const TopoMeshEdge usual = forward ? leaving : arriving) found.append(usual);
    for (const TopoMeshEdge spoke : outgoingOf(vertex)) {
        const TopoMeshEdge e = forward ? spoke : spoke->prev;
        if (!e->twin && (found.empty() || e != found[0])) found.append(e);
    }
    return found;
}

/// The boundary half-edges from one vertex to another, in the order of the walk, whose direction is theirs (`forward`)
/// or against it. Empty where no walk from the one comes to the other in so many steps, and where both are the same.
inline zn::vector<TopoMeshEdge> boundaryPath(TopoMeshVertex from, TopoMeshVertex to, bool forward,
                                             int mostSteps = std::numeric_limits<int>::max())
{
    if (from == to) return {};
    for (const TopoMeshEdge first : boundaryAt(from, forward)) {
        zn::vector<TopoMeshEdge> path;
        TopoMeshEdge e = first;
        do {
            path.append(e);
            const TopoMeshVertex reached = forward ? endOf(e) : e->origin;
            if (reached == to) return path;
            if (reached == from) break; // in another fan, from which the way is shorter
            e = forward ? nextOnBoundary(e) : prevOnBoundary(e);
        } while (e && e != first && path.size() < mostSteps);
    }
    return {};
}

/// The whole loop of a boundary half-edge, from it on; empty where it doesn't close.
inline zn::vector<TopoMeshEdge> boundaryLoop(TopoMeshEdge first)
{
    zn::vector<TopoMeshEdge> loop;
    TopoMeshEdge e = first;
    for (; e && (loop.empty() || e != first); e = nextOnBoundary(e)) loop.append(e);
    return e ? loop : zn::vector<TopoMeshEdge>();
}

/// The first whole loop on which a vertex is, from it on; empty where none closes.
inline zn::vector<TopoMeshEdge> loopThrough(TopoMeshVertex vertex)
{
    for (const TopoMeshEdge first : boundaryAt(vertex, true))
        if (zn::vector<TopoMeshEdge> loop = boundaryLoop(first); !loop.empty()) return loop;
    return {};
}

/// Whether two lists have no half-edge in common.
inline bool areDisjoint(zn::vector<TopoMeshEdge> a, zn::vector<TopoMeshEdge> b)
{
    std::sort(a.begin(), a.end());
    return std::none_of(b.begin(), b.end(), [&](TopoMeshEdge e) { return std::binary_search(a.begin(), a.end(), e); });
}

} // namespace znGeom::internal
