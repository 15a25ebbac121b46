#include "znGeom/topology/internal/fan.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

using namespace znLinear;

/// Lets everything that starts at `dying` start at `survivor`, and removes it.
void TopoMesh::mergeInto(TopoMeshVertex survivor, TopoMeshVertex dying)
{
    const TopoMeshEdge any = dying->edge;
    for (const TopoMeshEdge e : outgoing(dying)) setOrigin(e, survivor);
    ensureEdge(survivor, any);
    removeVertex(dying);
}

// Collapse

TopoMeshVertex TopoMesh::collapseEdge(TopoMeshEdge e)
{
    const TopoMeshVertex survivor = endOf(e);
    const TopoMeshEdge t = e->twin;
    mergeInto(survivor, e->origin);
    const TopoMeshEdge left = collapseSide(e);
    const TopoMeshEdge right = t && t->face ? collapseSide(t) : TopoMeshEdge();
    ensureEdge(survivor, left, right);
    return survivor;
}

/// Removes a half-edge whose ends have become one vertex, with its face if that is a triangle.
/// \return a half-edge that leaves the vertex on this side, or null
TopoMeshEdge TopoMesh::collapseSide(TopoMeshEdge e)
{
    const TopoMeshEdge next = e->next;
    if (next->next->next == e) return closeTriangle(e);
    if (e->face->edge == e) e->face->edge = next;
    link(e->prev, next);
    removeEdge(e);
    return next;
}

/// Removes a triangle of which one side has shrunk to a vertex, and joins what lies beyond the other two sides.
TopoMeshEdge TopoMesh::closeTriangle(TopoMeshEdge e)
{
    const TopoMeshEdge after = e->next, before = e->prev;
    const TopoMeshEdge replaced = after->twin, kept = before->twin;
    const TopoMeshVertex apex = before->origin;
    const TopoMeshFace face = e->face;
    TopoMeshEdge outer = replaced == before ? TopoMeshEdge() : replaced;
    const TopoMeshEdge inner = kept == after ? TopoMeshEdge() : kept;

    removeEdge(e);
    removeEdge(before);
    removeFace(face);
    if (outer && inner) {
        // The record of `after` steps in for its twin, which starts at the apex and runs beside `kept`.
        unpair(after);
        setOrigin(after, apex);
        after->face = replaced->face;
        link(replaced->prev, after);
        link(after, replaced->next);
        if (after->face->edge == replaced) after->face->edge = after;
        if (apex->edge == replaced) apex->edge = after;
        removeEdge(replaced);
        setTwins(kept, after);
        outer = after;
    } else {
        removeEdge(after);
    }
    ensureEdge(apex, outer, inner ? inner->next : inner);
    return inner ? inner : outer ? outer->next : outer;
}

// Deletion

TopoMeshFace TopoMesh::deleteVertex(TopoMeshVertex v)
{
    const zn::vector<TopoMeshEdge> fan = isolateFan(v);
    if (fan.empty()) {
        removeVertex(v);
        return {};
    }
    const bool open = !nextAround(fan.back());
    zn::vector<TopoMeshEdge> ring;
    zn::vector<TopoMeshVertex> neighbours;
    for (int i = fan.size() - 1; i >= 0; --i) { // round the ring the faces come in the opposite order
        for (TopoMeshEdge side = fan[i]->next; side != fan[i]->prev; side = side->next) ring.append(side);
        for (TopoMeshEdge side = fan[i]->next; side != fan[i]; side = side->next) neighbours.append(side->origin);
    }
    for (const TopoMeshEdge e : fan) {
        const TopoMeshEdge arriving = e->prev;
        removeFace(e->face);
        removeEdge(e);
        removeEdge(arriving);
    }
    removeVertex(v);
    const TopoMeshFace face = closeRing(ring, open);
    for (const TopoMeshVertex neighbour : neighbours) ensureEdge(neighbour);
    return face;
}

/// Removes those faces at a vertex that no ring can be made of: the faces of other fans, and all of them where one
/// meets the vertex twice or where a single face of a boundary vertex is left. \return the fan that stays, in order
zn::vector<TopoMeshEdge> TopoMesh::isolateFan(TopoMeshVertex v)
{
    zn::vector<TopoMeshEdge> fan;
    if (!v->edge) return fan;
    forFan(v->edge, [&](TopoMeshEdge e) { fan.append(e); });
    const auto inFan = [&](TopoMeshEdge e) { return std::find(fan.begin(), fan.end(), e) != fan.end(); };
    const auto meetsTwice = [&](TopoMeshEdge e) {
        TopoMeshEdge side = e->next;
        while (side->origin != v) side = side->next;
        return side != e;
    };
    const bool single = fan.size() == 1 && !nextAround(fan[0]);
    const bool noRing = single || std::any_of(fan.begin(), fan.end(), meetsTwice);
    if (noRing || fan.size() < v->numOutgoing)
        for (const TopoMeshEdge e : outgoing(v))
            if (e->face && (noRing || !inFan(e))) deleteFace(e->face);
    if (noRing) fan.clear();
    return fan;
}

/// Makes a face of a chain of half-edges that lost theirs; an open chain gets a boundary half-edge from its end to its
/// beginning. Two sides make no face: what lies beyond them is joined.
TopoMeshFace TopoMesh::closeRing(const zn::vector<TopoMeshEdge>& ring, bool open)
{
    if (ring.empty()) return {};
    const TopoMeshVertex begin = ring.front()->origin, end = endOf(ring.back());
    const bool needsSide = open && begin != end;
    if (ring.size() + (needsSide ? 1 : 0) < 3) {
        const TopoMeshEdge beyond = ring.front()->twin, other = ring.back()->twin;
        for (const TopoMeshEdge e : ring) removeEdge(e);
        if (ring.size() == 2 && beyond && other && beyond->face && other->face) setTwins(beyond, other);
        return {};
    }
    const TopoMeshFace face = makeFace();
    TopoMeshEdge last = needsSide ? makeEdge(end, face) : ring.back();
    if (needsSide) ensureEdge(end, last);
    for (const TopoMeshEdge e : ring) {
        e->face = face;
        link(last, e);
        last = e;
        ensureEdge(e->origin, e);
    }
    if (needsSide) link(ring.back(), ring.front()->prev);
    face->edge = ring.front();
    return face;
}

void TopoMesh::deleteFace(TopoMeshFace f)
{
    const TopoMeshEdge first = f->edge;
    TopoMeshEdge e = first;
    do {
        // While the links still tell the way: an outgoing half-edge of another face.
        const TopoMeshVertex v = e->origin;
        const TopoMeshEdge after = nextAround(e), before = prevAround(e);
        if (v->edge->face == f) v->edge = after && after->face != f ? after : before;
        if (v->edge && v->edge->face == f) v->edge = {};
        if (!v->edge) v->edge = e;
        e = e->next;
    } while (e != first);
    do {
        removeEdge(e);
        e = e->next;
    } while (e != first);
    removeFace(f);
    do {
        ensureEdge(e->origin);
        e = e->next;
    } while (e != first);
}

// Merging

void TopoMesh::mergeVertices(TopoMeshEdge a, TopoMeshEdge b)
{
    const TopoMeshVertex aBegin = a->origin, aEnd = endOf(a), bBegin = b->origin, bEnd = endOf(b);
    if (a->face == b->face || aBegin == bBegin || aEnd == bEnd) return;
    if (bEnd != aBegin) mergeInto(aBegin, bEnd);
    if (bBegin != aEnd) mergeInto(aEnd, bBegin);
    setTwins(a, b);
}

} // namespace znGeom
