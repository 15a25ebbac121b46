#include <algorithm>

#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

/// The corner across a half-edge at its origin, as the half-edge that leaves it there. Halves of a pair may run the
/// same way.
TopoMeshEdge cornerAcrossOrigin(TopoMeshEdge e)
{
    const TopoMeshEdge next = e->twin->next;
    return next->origin == e->origin ? next : e->twin;
}

/// The same at its end.
TopoMeshEdge cornerAcrossEnd(TopoMeshEdge e) { return e->twin->origin == endOf(e) ? e->twin : e->twin->next; }

/// A walk from corner to corner of a vertex across the edges there. A corner is named by the half-edge that leaves it.
struct CornerWalk
{
    TopoMeshEdge corner; ///< null when the walk is over
    bool outward;        ///< the next step crosses the half-edge that leaves the corner, otherwise the one that arrives

    void step()
    {
        const TopoMeshEdge crossed = outward ? corner : corner->prev;
        if (!crossed->twin) {
            corner = {};
            return;
        }
        corner = outward ? cornerAcrossOrigin(crossed) : cornerAcrossEnd(crossed);
        outward = corner != crossed->twin;
    }
};

zn::vector<TopoMeshEdge> connectedCorners(TopoMeshEdge first)
{
    zn::vector<TopoMeshEdge> corners{first};
    for (const bool outward : {true, false}) {
        CornerWalk walk{first, outward};
        for (walk.step(); walk.corner; walk.step()) {
            if (walk.corner == first) return corners;
            corners.append(walk.corner);
        }
    }
    return corners;
}

} // namespace

void TopoMesh::splitEdge(TopoMeshEdge e)
{
    if (!e->twin) return;
    const TopoMeshEdge atOrigin = cornerAcrossOrigin(e), atEnd = cornerAcrossEnd(e);
    unpair(e);
    divideVertex(e, atOrigin);
    divideVertex(e->next, atEnd);
}

TopoMeshVertex TopoMesh::splitVertex(TopoMeshVertex, TopoMeshEdge e)
{
    if (!e->twin) return {};
    const TopoMeshEdge across = cornerAcrossOrigin(e);
    unpair(e);
    return divideVertex(e, across);
}

void TopoMesh::splitVertex(TopoMeshEdge in, TopoMeshEdge out)
{
    if (!in->twin && !out->twin) return;
    const TopoMeshEdge across = in->twin ? cornerAcrossEnd(in) : cornerAcrossOrigin(out);
    for (const TopoMeshEdge e : {in, out})
        if (e->twin) unpair(e);
    divideVertex(out, across);
}

/// The corners of a vertex that are connected with `moved` across edges there get a vertex of their own, unless `kept`,
/// a corner of the same vertex, is one of them.
TopoMeshVertex TopoMesh::divideVertex(TopoMeshEdge kept, TopoMeshEdge moved)
{
    const TopoMeshVertex old = kept->origin;
    if (moved->origin != old) return {};
    const zn::vector<TopoMeshEdge> corners = connectedCorners(moved);
    if (std::find(corners.begin(), corners.end(), kept) != corners.end()) return {};
    const TopoMeshVertex copy = allocVertex(old->point);
    for (const TopoMeshEdge corner : corners) setOrigin(corner, copy);
    copy->edge = moved;
    return copy;
}

/// Lets everything that starts at `dying` start at `survivor`, and removes it.
void TopoMesh::mergeInto(TopoMeshVertex survivor, TopoMeshVertex dying)
{
    if (!dying->linkedBack) linkBack(dying);
    TopoMeshEdge last;
    for (const TopoMeshEdge e : outgoingOf(dying)) {
        e->origin = survivor;
        last = e;
    }
    if (last) { // both lists become one
        last->outNext = survivor->firstOut;
        if (survivor->linkedBack && survivor->firstOut >= 0)
            TopoBlock::numbered(last.record(), survivor->firstOut)->outPrev = last.number();
        survivor->firstOut = dying->firstOut;
        survivor->numOutgoing += dying->numOutgoing;
        if (!survivor->edge) survivor->edge = dying->edge;
        survivor->closedAt = ~0u;
    }
    removeVertex(dying);
}

void TopoMesh::mergeVertices(TopoMeshEdge a, TopoMeshEdge b)
{
    if (a == b || a->twin || b->twin) return;
    if (endOf(b) != a->origin) mergeInto(a->origin, endOf(b));
    if (b->origin != endOf(a)) mergeInto(endOf(a), b->origin);
    setTwins(a, b);
}

} // namespace znGeom
