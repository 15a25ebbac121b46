#include "znGeom/topology/internal/links.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using internal::link;

namespace {

/// The sides across from a vertex, chained: they run from face to face of its fan.
struct Ring
{
    TopoMeshEdge first, last;
    int size = 0;
};

/// Puts the sides of a corner's face that don't meet the vertex in front of a ring: from face to face of the fan the
/// ring runs backwards.
void prepend(TopoMeshEdge corner, Ring& ring)
{
    const TopoMeshEdge first = corner->next, last = corner->prev->prev;
    if (ring.size == 0)
        ring.last = last;
    else
        link(last, ring.first);
    ring.first = first;
    ++ring.size;
    for (TopoMeshEdge side = first; side != last; side = side->next) ++ring.size;
}

bool meetsTwice(TopoMeshEdge corner)
{
    for (const TopoMeshEdge side : sidesOf(corner->face))
        if (side != corner && side->origin == corner->origin) return true;
    return false;
}

/// Whether the faces of a fan leave a ring when their vertex goes: not a single face at the boundary, nor one that
/// meets the vertex twice.
bool leavesRing(TopoMeshEdge fan)
{
    if (!nextAround(fan) && !prevAround(fan)) return false;
    for (const TopoMeshEdge corner : fanOf(fan))
        if (meetsTwice(corner)) return false;
    return true;
}

} // namespace

TopoMeshFace TopoMesh::deleteVertex(TopoMeshVertex v)
{
    const TopoMeshFace face = v->edge && leavesRing(v->edge) ? replaceFan(v->edge) : TopoMeshFace();
    while (v->edge) deleteFace(v->edge->face); // of other fans, too
    removeVertex(v);
    return face;
}

/// Removes the faces of a fan with all half-edges at its vertex, and makes one face of what lies around them.
TopoMeshFace TopoMesh::replaceFan(TopoMeshEdge fan)
{
    const bool open = !prevAround(fanBegin(fan));
    Ring ring;
    for (const TopoMeshEdge corner : fanOf(fan)) {
        const TopoMeshEdge arriving = corner->prev;
        prepend(corner, ring);
        removeFace(corner->face);
        removeEdge(corner);
        removeEdge(arriving);
    }
    const TopoMeshVertex begin = ring.first->origin,
                         end = endOf(ring.last); // the half-edge behind knows its origin yet
    const bool needsSide = open && begin != end;
    if (ring.size + (needsSide ? 1 : 0) < 3) {
        closeShortRing(ring.first, ring.size);
        return {};
    }
    const TopoMeshFace face = makeFace();
    TopoMeshEdge last = ring.last;
    if (needsSide) {
        last = makeEdge(end, face);
        link(ring.last, last);
    }
    link(last, ring.first);
    face->edge = ring.first;
    for (const TopoMeshEdge side : sidesOf(face)) side->face = face;
    return face;
}

/// One or two sides make no face: they go, and what lies beyond two of them is joined.
void TopoMesh::closeShortRing(TopoMeshEdge first, int size)
{
    const TopoMeshEdge last = size == 1 ? first : first->next;
    const TopoMeshEdge beyond = first->twin, other = last->twin;
    removeEdge(first);
    if (last != first) removeEdge(last);
    if (last != first && beyond && other && beyond != last) setTwins(beyond, other);
}

bool TopoMesh::deleteEdge(TopoMeshEdge e)
{
    const TopoMeshEdge t = e->twin;
    if (!t || e->face == t->face || t->origin != endOf(e)) return false;
    const TopoMeshFace kept = e->face, gone = t->face;
    const TopoMeshEdge fromA = t->next, fromB = e->next;
    for (TopoMeshEdge side = t->next; side != t; side = side->next) side->face = kept;
    link(e->prev, fromA);
    link(t->prev, fromB);
    kept->edge = kept->edge == e ? fromB : kept->edge;
    removeEdge(e);
    removeEdge(t);
    removeFace(gone);
    return true;
}

void TopoMesh::deleteFace(TopoMeshFace f)
{
    for (const TopoMeshEdge side : sidesOf(f)) removeEdge(side); // the links of what is removed stay
    removeFace(f);
}

} // namespace znGeom
