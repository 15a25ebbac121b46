#include "znGeom/topology/internal/links.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using internal::isTriangle;
using internal::link;

namespace {

/// The corner across from an edge of a triangle; null in a larger face.
TopoMeshVertex thirdCorner(TopoMeshEdge e) { return isTriangle(e) ? e->prev->origin : TopoMeshVertex(); }

bool isTip(TopoMeshVertex corner) { return corner && corner.valence() == 1; }

} // namespace

TopoMeshVertex TopoMesh::collapseEdge(TopoMeshEdge e)
{
    const TopoMeshVertex origin = e->origin, end = endOf(e);
    const TopoMeshVertex survivor = origin.valence() > end.valence() ? origin : end;
    survivor->point = end->point;
    collapseInto(survivor, e);
    return survivor;
}

TopoMeshVertex TopoMesh::contractEdge(TopoMeshEdge e)
{
    const TopoMeshVertex survivor = endOf(e);
    collapseInto(survivor, e);
    return survivor;
}

void TopoMesh::collapseInto(TopoMeshVertex survivor, TopoMeshEdge e)
{
    const TopoMeshVertex other = survivor == e->origin ? endOf(e) : e->origin;
    const TopoMeshEdge t = e->twin;
    if (other != survivor) mergeInto(survivor, other);
    dropSide(e);
    if (t && t.isAlive()) dropSide(t);
}

/// Takes a half-edge whose two ends are the same vertex out of its face. A triangle disappears, and its other two sides
/// become one.
void TopoMesh::dropSide(TopoMeshEdge e)
{
    const TopoMeshEdge next = e->next, prev = e->prev;
    const TopoMeshFace face = e->face;
    const bool triangle = isTriangle(e);
    removeEdge(e);
    if (triangle) {
        removeFace(face);
        zipSides(next, prev);
        return;
    }
    if (face->edge == e) face->edge = next;
    link(prev, next);
}

/// Removes two sides of a face that is gone and joins what lies beyond them: the twin of `before` stays, and the record
/// of `after` takes the place of the twin of `after`.
void TopoMesh::zipSides(TopoMeshEdge after, TopoMeshEdge before)
{
    const TopoMeshEdge replaced = after->twin, kept = before->twin;
    removeEdge(before);
    if (!replaced || !kept || replaced == before) {
        removeEdge(after);
        return;
    }
    unpair(after);
    setOrigin(after, replaced->origin);
    after->face = replaced->face;
    if (after->face->edge == replaced) after->face->edge = after;
    link(replaced->prev, after);
    link(after, replaced->next);
    if (after->origin->edge == replaced) after->origin->edge = after;
    removeEdge(replaced);
    setTwins(kept, after);
}

bool TopoMesh::canCollapse(TopoMeshEdge e)
{
    const TopoMeshVertex origin = e->origin, end = endOf(e);
    const TopoMeshEdge t = e->twin;
    if (origin == end || (t && (t->face == e->face || t->origin != end))) return false;
    const TopoMeshVertex a = thirdCorner(e), b = t ? thirdCorner(t) : TopoMeshVertex();
    if (a && a == b) return false;
    if (t && !isTip(a) && !isTip(b) && origin.onBoundary() && end.onBoundary()) return false;

    const auto isFurther = [&](TopoMeshVertex v) { return v != a && v != b && v != end && areJoined(v, end); };
    for (const TopoMeshEdge spoke : outgoingOf(origin)) {
        const TopoMeshEdge before = spoke->prev;
        if ((endOf(spoke) == end && spoke != e) || (before->origin == end && before != t)) return false;
        if (isFurther(endOf(spoke)) || isFurther(before->origin)) return false;
        const bool ownFace = spoke->face == e->face || (t && spoke->face == t->face);
        if (!ownFace && !isTriangle(spoke) && spoke->face.adjacent(end)) return false;
    }
    return true;
}

} // namespace znGeom
