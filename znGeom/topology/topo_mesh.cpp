#include "znGeom/topology/topo_mesh.h"

#include "znGeom/foundation/machine/prefetch.h"

#include "znGeom/topology/internal/fan.h"

namespace znGeom {

using namespace znLinear;

namespace {

// The lists of vertices and faces run through `next` and `prev`, that of half-edges through `listNext` and `listPrev`.
TopoMeshVertex& nextOf(TopoMeshVertex v) { return v->next; }
TopoMeshVertex& prevOf(TopoMeshVertex v) { return v->prev; }
TopoMeshEdge& nextOf(TopoMeshEdge e) { return e->listNext; }
TopoMeshEdge& prevOf(TopoMeshEdge e) { return e->listPrev; }
TopoMeshFace& nextOf(TopoMeshFace f) { return f->next; }
TopoMeshFace& prevOf(TopoMeshFace f) { return f->prev; }

template <typename List, typename Handle>
Handle append(List& list, Handle element)
{
    prevOf(element) = list.last;
    (list.last ? nextOf(list.last) : list.first) = element;
    list.last = element;
    ++list.count;
    return element;
}

/// The element's own links stay, so that a walk may go on from it.
template <typename List, typename Handle>
void unlink(List& list, Handle element)
{
    (prevOf(element) ? nextOf(prevOf(element)) : list.first) = nextOf(element);
    (nextOf(element) ? prevOf(nextOf(element)) : list.last) = prevOf(element);
    --list.count;
}

} // namespace

TopoMeshModification::TopoMeshModification(const TopoMesh* mesh, Type type) : EntityModification(mesh), m_type(type) {}
TopoMeshModification::~TopoMeshModification() = default;

TopoMesh::TopoMesh()
    : m_vertexArena(TopoMetadata<16>::numSlots * sizeof(BlindData)),
      m_edgeArena(TopoMetadata<20>::numSlots * sizeof(BlindData)), m_faceArena(sizeof(BlindData))
{}

TopoMesh::~TopoMesh() = default;

// Elements

TopoMeshVertex TopoMesh::allocVertex(const Point& point)
{
    const TopoMeshVertex vertex(m_vertexArena.make());
    vertex->point = point;
    return append(m_vertices, vertex);
}

TopoMeshEdge TopoMesh::makeEdge(TopoMeshVertex origin, TopoMeshFace face)
{
    const TopoMeshEdge edge(m_edgeArena.make());
    edge->origin = origin;
    edge->face = face;
    ++origin->numOutgoing;
    return append(m_edges, edge);
}

TopoMeshFace TopoMesh::makeFace() { return append(m_faces, TopoMeshFace(m_faceArena.make())); }

void TopoMesh::removeVertex(TopoMeshVertex v)
{
    v->edge = {};
    unlink(m_vertices, v);
}

/// A half-edge without a face is a removed one.
void TopoMesh::removeEdge(TopoMeshEdge e)
{
    if (e->twin) unpair(e);
    ++m_numOpenings;
    e->face = {};
    --e->origin->numOutgoing;
    unlink(m_edges, e);
}

void TopoMesh::removeFace(TopoMeshFace f)
{
    f->edge = {};
    unlink(m_faces, f);
}

void TopoMesh::unpair(TopoMeshEdge e)
{
    e->twin->twin = {};
    e->twin = {};
    ++m_numOpenings;
}

void TopoMesh::setOrigin(TopoMeshEdge e, TopoMeshVertex origin)
{
    --e->origin->numOutgoing;
    e->origin = origin;
    ++origin->numOutgoing;
}

/// Makes sure that a vertex' `edge` is a living outgoing half-edge: the one that it has, one of those offered, or,
/// where fans only touched at the vertex and this one is gone, one of another fan. Null for a vertex without any.
void TopoMesh::ensureEdge(TopoMeshVertex v, TopoMeshEdge first, TopoMeshEdge second)
{
    const auto leaves = [&](TopoMeshEdge e) { return e && e->face && e->origin == v; };
    if (leaves(v->edge)) return;
    v->edge = leaves(first) ? first : leaves(second) ? second : TopoMeshEdge();
    if (v->edge || v->numOutgoing == 0) return;
    v->edge = m_edges.first;
    while (v->edge->origin != v) v->edge = v->edge->listNext;
}

/// All outgoing half-edges, of fans that touch only here as well.
zn::vector<TopoMeshEdge> TopoMesh::outgoing(TopoMeshVertex v) const
{
    zn::vector<TopoMeshEdge> found;
    if (!v->edge) return found;
    forFan(v->edge, [&](TopoMeshEdge e) { found.append(e); });
    if (found.size() == v->numOutgoing) return found;
    found.clear();
    for (TopoMeshEdge e = m_edges.first; e; e = e->listNext)
        if (e->origin == v) found.append(e);
    return found;
}

// Building

/// The half-edge without a twin that leaves a vertex in the fan of its `edge`, or null. The vertex' `edge` becomes that
/// half-edge, so that it is found at once the next time; a fan that is closed is not walked twice.
inline TopoMeshEdge TopoMesh::openEnd(TopoMeshVertex v)
{
    if (!v->edge || v->closedAt == m_numOpenings) return {};
    if (!v->edge->twin) return v->edge;
    v->edge = fanEnd(v->edge);
    if (!v->edge->twin) return v->edge;
    v->closedAt = m_numOpenings;
    return {};
}

TopoMeshFace TopoMesh::makeFace(const TopoMeshVertex* vertices, int count)
{
    // In a mesh of no order these are the loads that take the time: all at once rather than one after the other.
    for (int i = 0; i < count; ++i) znUtil::prefetch(vertices[i].record());
    for (int i = 0; i < count; ++i) znUtil::prefetch(vertices[i]->edge.record());
    const TopoMeshFace face = makeFace();
    const TopoMeshEdge first = makeEdge(vertices[0], face);
    face->edge = first;
    TopoMeshEdge last = first;
    for (int i = 1; i < count; ++i) {
        const TopoMeshEdge e = makeEdge(vertices[i], face);
        link(last, e);
        last = e;
    }
    link(last, first);

    TopoMeshEdge e = first;
    for (int i = 0; i < count; ++i, e = e->next) {
        // A face that has a vertex twice may find its own half-edges.
        const TopoMeshEdge back = e->twin ? TopoMeshEdge() : openEnd(vertices[i + 1 < count ? i + 1 : 0]);
        if (back && back != e && endOf(back) == vertices[i]) setTwins(back, e);
    }
    for (int i = 0; i < count; ++i, e = e->next)
        if (!vertices[i]->edge) vertices[i]->edge = e;
    return face;
}

TopoMeshFace TopoMesh::allocTriangle(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c)
{
    const TopoMeshVertex corners[] = {a, b, c};
    return makeFace(corners, 3);
}

TopoMeshFace TopoMesh::allocQuad(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d)
{
    const TopoMeshVertex corners[] = {a, b, c, d};
    return makeFace(corners, 4);
}

TopoMeshFace TopoMesh::allocFace(const zn::vector<TopoMeshVertex>& vertices)
{
    return makeFace(vertices.data(), vertices.size());
}

void TopoMesh::setTwins(TopoMeshEdge a, TopoMeshEdge b)
{
    for (const TopoMeshEdge e : {a, b})
        if (e->twin) unpair(e);
    a->twin = b;
    b->twin = a;
    if (a->metadata.isWritten())
        b->metadata.copyFrom(a->metadata);
    else if (b->metadata.isWritten())
        a->metadata.copyFrom(b->metadata);
}

TopoMeshEdge TopoMesh::findEdge(TopoMeshVertex a, TopoMeshVertex b)
{
    for (TopoMeshEdge e = a->edge; e;) {
        if (endOf(e) == b) return e;
        e = nextAround(e);
        if (e == a->edge) return {};
    }
    for (TopoMeshEdge e = a->edge ? prevAround(a->edge) : a->edge; e && e != a->edge; e = prevAround(e))
        if (endOf(e) == b) return e;
    return {};
}

} // namespace znGeom
