#include "znGeom/topology/topo_handles.h"

#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

bool TopoMeshVertex::onBoundary() const
{
    for (const TopoMeshEdge e : outgoingOf(*this))
        if (!e->twin || !e->prev->twin) return true;
    return false;
}

TopoMeshFace TopoMeshVertex::adjacent(TopoMeshVertex other) const
{
    for (const TopoMeshEdge e : fanOf(*this))
        if (e->face.adjacent(other)) return e->face;
    for (const TopoMeshEdge e : outgoingOf(*this))
        if (e->face.adjacent(other)) return e->face;
    return {};
}

void TopoMeshEdge::setMetadata(int slot, BlindData value) const
{
    record()->metadata[slot] = value;
    if (record()->twin) record()->twin->metadata[slot] = value;
}

int TopoMeshFace::numVertices() const
{
    int count = 0;
    for ([[maybe_unused]] const TopoMeshEdge side : sidesOf(*this)) ++count;
    return count;
}

Point TopoMeshFace::centroid() const
{
    Vector sum;
    int count = 0;
    for (const TopoMeshEdge side : sidesOf(*this)) {
        sum += side->origin->point.asVector();
        ++count;
    }
    return (sum / double(count)).asPoint();
}

TopoMeshEdge TopoMeshFace::adjacent(TopoMeshVertex vertex) const
{
    for (const TopoMeshEdge side : sidesOf(*this))
        if (side->origin == vertex) return side;
    return {};
}

} // namespace znGeom
