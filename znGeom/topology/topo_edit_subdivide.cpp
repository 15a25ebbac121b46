#include "znGeom/topology/internal/links.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;
using internal::isTriangle;
using internal::link;

namespace {

/// Makes a face of three half-edges. Its first one keeps its place, counted from `diagonal`, among the half-edges that
/// the face had before.
void formTriangle(TopoMeshFace face, TopoMeshEdge diagonal, TopoMeshEdge second, TopoMeshEdge third)
{
    const TopoMeshEdge before = face->edge;
    const TopoMeshEdge first = before == diagonal ? diagonal : before == diagonal->next ? second : third;
    link(diagonal, second);
    link(second, third);
    link(third, diagonal);
    for (const TopoMeshEdge e : {diagonal, second, third}) e->face = face;
    face->edge = first;
}

} // namespace

bool TopoMesh::swapEdge(TopoMeshEdge e)
{
    const TopoMeshEdge t = e->twin;
    if (!t || e->face == t->face || !isTriangle(e) || !isTriangle(t)) return false;
    const TopoMeshVertex a = e->origin, b = endOf(e), c = e->prev->origin, d = t->prev->origin;
    if (t->origin != b || endOf(t) != a || c == d || areJoined(c, d)) return false;

    const TopoMeshEdge bc = e->next, ca = e->prev, ad = t->next, db = t->prev;
    if (a->edge == e) a->edge = ad;
    if (b->edge == t) b->edge = bc;
    const bool counterClockwise = std::min(a, b) < std::min(c, d);
    setOrigin(e, counterClockwise ? d : c);
    setOrigin(t, counterClockwise ? c : d);
    const TopoMeshFace eFace = e->face, tFace = t->face;
    if (counterClockwise) {
        formTriangle(eFace, e, ca, ad);
        formTriangle(tFace, t, db, bc);
    } else {
        formTriangle(eFace, e, db, bc);
        formTriangle(tFace, t, ca, ad);
    }
    return true;
}

TopoMeshVertex TopoMesh::subdivideEdge(TopoMeshEdge e, const Point& point)
{
    const TopoMeshVertex middle = allocVertex(point), end = endOf(e);
    const TopoMeshEdge t = e->twin, rest = makeEdge(middle, e->face);
    link(rest, e->next);
    link(e, rest);
    if (!t) return middle;

    if (t->origin != end) {
        // The halves run the same way: the other one is cut behind its beginning, too.
        const TopoMeshEdge otherRest = makeEdge(middle, t->face);
        link(otherRest, t->next);
        link(t, otherRest);
        setTwins(rest, otherRest);
        return middle;
    }
    const TopoMeshEdge arriving = makeEdge(end, t->face);
    link(t->prev, arriving);
    link(arriving, t);
    if (t->face->edge == t) t->face->edge = arriving;
    if (end->edge == t) end->edge = arriving;
    setOrigin(t, middle);
    setTwins(rest, arriving);
    return middle;
}

TopoMeshEdge TopoMesh::subdivideFace(TopoMeshFace f, TopoMeshVertex a, TopoMeshVertex b)
{
    const TopoMeshEdge fromA = f.adjacent(a), fromB = f.adjacent(b);
    if (fromA == fromB || fromA->next == fromB || fromB->next == fromA) return {};
    cutFace(fromA, fromB, {});
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
    return centre;
}

} // namespace znGeom
