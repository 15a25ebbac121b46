#include "znGeom/topology/topo_mesh.h"

#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/topology/internal/links.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;
using internal::link;

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

/// The element's own links stay, so that a walk may continue from it.
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

TopoMesh::TopoMesh() : TopoMesh(nullptr) {}
TopoMesh::TopoMesh(TopoMemory* memory) : m_vertexArena(memory), m_edgeArena(memory), m_faceArena(memory) {}
TopoMesh::~TopoMesh() = default;

// Elements

TopoMeshVertex TopoMesh::allocVertex(const Point& point)
{
    const TopoMeshVertex vertex(m_vertexArena.make());
    vertex->point = point;
    return append(m_vertices, vertex);
}

/// The half-edge is in the list, but not yet among those that leave its origin.
TopoMeshEdge TopoMesh::makeLooseEdge(TopoMeshVertex origin, TopoMeshFace face)
{
    const TopoMeshEdge edge(m_edgeArena.make());
    edge->origin = origin;
    edge->face = face;
    return append(m_edges, edge);
}

TopoMeshEdge TopoMesh::makeEdge(TopoMeshVertex origin, TopoMeshFace face)
{
    const TopoMeshEdge edge = makeLooseEdge(origin, face);
    attach(edge);
    return edge;
}

TopoMeshFace TopoMesh::makeFace() { return append(m_faces, TopoMeshFace(m_faceArena.make())); }

void TopoMesh::removeVertex(TopoMeshVertex v)
{
    v->edge = {};
    v->numOutgoing = -1;
    unlink(m_vertices, v);
}

void TopoMesh::removeEdge(TopoMeshEdge e)
{
    if (e->twin) unpair(e);
    ++m_numOpenings;
    e->face = {};
    detach(e);
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

/// Puts a half-edge in front of those that leave its origin; the only one becomes the vertex's `edge`.
void TopoMesh::attach(TopoMeshEdge e)
{
    const TopoMeshVertex v = e->origin;
    const int number = e.number();
    e->outPrev = -1;
    e->outNext = v->firstOut;
    if (v->linkedBack && v->firstOut >= 0) TopoBlock::numbered(e.record(), v->firstOut)->outPrev = number;
    v->firstOut = number;
    if (!v->edge) v->edge = e;
    ++v->numOutgoing;
}

/// Takes a half-edge from among those that leave its origin. The vertex's `edge`, if it was this one, becomes another.
void TopoMesh::detach(TopoMeshEdge e)
{
    const TopoMeshVertex v = e->origin;
    if (v->firstOut == e.number()) {
        v->firstOut = e->outNext;
    } else {
        if (!v->linkedBack) linkBack(v);
        TopoBlock::numbered(e.record(), e->outPrev)->outNext = e->outNext;
    }
    if (v->linkedBack && e->outNext >= 0) TopoBlock::numbered(e.record(), e->outNext)->outPrev = e->outPrev;
    --v->numOutgoing;
    if (v->edge != e) return;
    v->edge = v->firstOut < 0 ? TopoMeshEdge() : TopoMeshEdge(TopoBlock::numbered(e.record(), v->firstOut));
    v->closedAt = ~0u;
}

void TopoMesh::linkBack(TopoMeshVertex v)
{
    int before = -1;
    for (const TopoMeshEdge e : outgoingOf(v)) {
        e->outPrev = before;
        before = e.number();
    }
    v->linkedBack = true;
}

void TopoMesh::setOrigin(TopoMeshEdge e, TopoMeshVertex origin)
{
    detach(e);
    e->origin = origin;
    attach(e);
}

// Building

/// The half-edge without a twin that leaves a vertex in the fan of its `edge`, or null. The vertex's `edge` becomes
/// that half-edge, so that it is found at once the next time; a fan that is closed is not walked twice.
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
    // In a mesh in no particular order these loads take most of the time: start them all at once rather than one after
    // another.
    for (int i = 0; i < count; ++i) znUtil::prefetch(vertices[i].record());
    for (int i = 0; i < count; ++i) znUtil::prefetch(vertices[i]->edge.record());
    const TopoMeshFace face = makeFace();
    const TopoMeshEdge first = makeLooseEdge(vertices[0], face);
    face->edge = first;
    TopoMeshEdge last = first;
    for (int i = 1; i < count; ++i) {
        const TopoMeshEdge e = makeLooseEdge(vertices[i], face);
        link(last, e);
        last = e;
    }
    link(last, first);
    for (const TopoMeshEdge e : sidesOf(face)) pairWithOpen(e);
    for (const TopoMeshEdge e : sidesOf(face)) attach(e);
    return face;
}

/// Pairs a new half-edge with the open one in the fan of its end's `edge`, if that runs the other way. In a face that
/// has a vertex twice that may be one of its own, and half-edges that are already paired come up again.
inline void TopoMesh::pairWithOpen(TopoMeshEdge e)
{
    const TopoMeshEdge back = e->twin ? TopoMeshEdge() : openEnd(endOf(e));
    if (back && back != e && endOf(back) == e->origin) setTwins(back, e);
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
    for (const TopoMeshEdge e : outgoingOf(a))
        if (endOf(e) == b) return e;
    return {};
}

bool areJoined(TopoMeshVertex a, TopoMeshVertex b)
{
    if (b.valence() < a.valence()) std::swap(a, b);
    for (const TopoMeshEdge e : outgoingOf(a))
        if (endOf(e) == b || e->prev->origin == b) return true;
    return false;
}

} // namespace znGeom
