#include "znGeom/topology/internal/fan.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

using namespace znLinear;

TopoMeshEdge TopoMesh::subdivideFace(TopoMeshFace f, TopoMeshVertex a, TopoMeshVertex b)
{
    const TopoMeshEdge fromB = f.adjacent(b);
    cutFace(f.adjacent(a), fromB, {});
    return fromB->prev;
}

TopoMeshFace TopoMesh::subdivideFace(TopoMeshFace f, TopoMeshVertex a, TopoMeshVertex b,
                                     const zn::vector<Point>& points)
{
    return cutFace(f.adjacent(a), f.adjacent(b), points);
}

/// Cuts the face of two half-edges from the origin of one to the origin of the other. The sides from `fromA` up to
/// `fromB` go to the new face.
TopoMeshFace TopoMesh::cutFace(TopoMeshEdge fromA, TopoMeshEdge fromB, const zn::vector<Point>& points)
{
    const TopoMeshFace old = fromA->face, created = makeFace();
    bool losesFirst = false;
    for (TopoMeshEdge side = fromA; side != fromB; side = side->next) {
        losesFirst = losesFirst || side == old->edge;
        side->face = created;
    }
    // The path grows from a: one half-edge forward in the old face, one back in the new one.
    TopoMeshEdge forward = fromA->prev, back = fromA;
    const TopoMeshEdge lastSide = fromB->prev;
    TopoMeshVertex from = fromA->origin;
    for (int i = 0; i <= points.size(); ++i) {
        const TopoMeshVertex to = i < points.size() ? allocVertex(points[i]) : fromB->origin;
        const TopoMeshEdge there = makeEdge(from, old), andBack = makeEdge(to, created);
        setTwins(there, andBack);
        if (i == 0 && losesFirst) old->edge = there;
        if (i > 0) from->edge = there;
        link(forward, there);
        link(andBack, back);
        forward = there;
        back = andBack;
        from = to;
    }
    link(forward, fromB);
    link(lastSide, back);
    created->edge = fromA;
    return created;
}

TopoMeshVertex TopoMesh::subdivideFace(TopoMeshFace f, const Point& point)
{
    const TopoMeshVertex centre = allocVertex(point);
    const TopoMeshEdge first = f->edge;
    TopoMeshEdge side = first, firstSpoke, lastReturn;
    do {
        const TopoMeshEdge nextSide = side->next;
        const TopoMeshFace face = side == first ? f : makeFace();
        const TopoMeshEdge inward = makeEdge(nextSide->origin, face), spoke = makeEdge(centre, face);
        side->face = face;
        face->edge = side;
        link(side, inward);
        link(inward, spoke);
        link(spoke, side);
        if (lastReturn)
            setTwins(spoke, lastReturn);
        else
            firstSpoke = spoke;
        lastReturn = inward;
        side = nextSide;
    } while (side != first);
    setTwins(firstSpoke, lastReturn);
    centre->edge = firstSpoke;
    return centre;
}

} // namespace znGeom
