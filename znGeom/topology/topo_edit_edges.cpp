#include "znGeom/topology/internal/fan.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

using namespace znLinear;

namespace {

bool isTriangle(TopoMeshEdge e) { return e->next->next->next == e; }

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

/// Which half-edge leaves `v`: `e` or the one after it.
TopoMeshEdge outgoingAt(TopoMeshEdge e, TopoMeshVertex v) { return e->origin == v ? e : e->next; }

} // namespace

bool TopoMesh::swapEdge(TopoMeshEdge e)
{
    const TopoMeshEdge t = e->twin;
    if (!t || e->face == t->face || !isTriangle(e) || !isTriangle(t)) return false;
    const TopoMeshVertex a = e->origin, b = endOf(e), c = e->prev->origin, d = t->prev->origin;
    if (t->origin != b || endOf(t) != a || c == d || findEdge(c, d) || findEdge(d, c)) return false;

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

bool TopoMesh::deleteEdge(TopoMeshEdge e)
{
    const TopoMeshEdge t = e->twin;
    if (!t || e->face == t->face || t->origin != endOf(e)) return false;
    const TopoMeshFace kept = e->face, gone = t->face;
    const TopoMeshVertex a = e->origin, b = t->origin;
    const TopoMeshEdge fromA = t->next, fromB = e->next;
    for (TopoMeshEdge side = t->next; side != t; side = side->next) side->face = kept;
    link(e->prev, fromA);
    link(t->prev, fromB);
    kept->edge = kept->edge == e ? fromB : kept->edge;
    removeEdge(e);
    removeEdge(t);
    removeFace(gone);
    ensureEdge(a, fromA);
    ensureEdge(b, fromB);
    return true;
}

TopoMeshVertex TopoMesh::subdivideEdge(TopoMeshEdge e, const Point& point)
{
    const TopoMeshVertex middle = allocVertex(point), end = endOf(e);
    const TopoMeshEdge t = e->twin, rest = makeEdge(middle, e->face);
    link(rest, e->next);
    link(e, rest);
    middle->edge = rest;
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

void TopoMesh::splitEdge(TopoMeshEdge e)
{
    const TopoMeshEdge t = e->twin;
    if (!t) return;
    unpair(e);
    divideFan(e, outgoingAt(t, e->origin));
    divideFan(e->next, outgoingAt(t, endOf(e)));
}

TopoMeshVertex TopoMesh::splitVertex(TopoMeshVertex v, TopoMeshEdge e)
{
    const TopoMeshEdge t = e->twin;
    if (!t) return {};
    unpair(e);
    return divideFan(e, outgoingAt(t, v));
}

void TopoMesh::splitVertex(TopoMeshEdge in, TopoMeshEdge out)
{
    const TopoMeshEdge across = in->twin ? in->twin : out->twin;
    if (!across) return;
    for (const TopoMeshEdge e : {in, out})
        if (e->twin) unpair(e);
    divideFan(out, outgoingAt(across, out->origin));
}

/// Gives the fan of `moved` a vertex of its own, when `kept`, which leaves the same vertex, is not part of it.
TopoMeshVertex TopoMesh::divideFan(TopoMeshEdge kept, TopoMeshEdge moved)
{
    zn::vector<TopoMeshEdge> fan;
    forFan(moved, [&](TopoMeshEdge e) { fan.append(e); });
    if (std::find(fan.begin(), fan.end(), kept) != fan.end()) return {};
    const TopoMeshVertex old = kept->origin, copy = allocVertex(old->point);
    for (const TopoMeshEdge e : fan) setOrigin(e, copy);
    copy->edge = moved;
    ensureEdge(old, kept);
    return copy;
}

} // namespace znGeom
