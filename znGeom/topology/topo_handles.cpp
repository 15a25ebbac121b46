#include "znGeom/topology/topo_handles.h"

#include "znGeom/topology/internal/fan.h"

namespace znGeom {

using namespace znLinear;

bool TopoMeshVertex::onBoundary() const
{
    const TopoMeshEdge e = record()->edge;
    return e && (boundaryOut(e) || boundaryIn(e));
}

TopoMeshFace TopoMeshVertex::adjacent(TopoMeshVertex other) const
{
    TopoMeshFace found;
    if (!record()->edge) return found;
    forFan(record()->edge, [&](TopoMeshEdge e) {
        if (!found && e->face.adjacent(other)) found = e->face;
    });
    return found;
}

void TopoMeshEdge::setMetadata(int slot, BlindData value) const
{
    record()->metadata[slot] = value;
    if (record()->twin) record()->twin->metadata[slot] = value;
}

int TopoMeshFace::numVertices() const
{
    int count = 1;
    for (TopoMeshEdge e = record()->edge->next; e != record()->edge; e = e->next) ++count;
    return count;
}

Point TopoMeshFace::centroid() const
{
    Vector sum;
    TopoMeshEdge e = record()->edge;
    do {
        sum += e->origin->point.asVector();
        e = e->next;
    } while (e != record()->edge);
    return (sum / double(numVertices())).asPoint();
}

TopoMeshEdge TopoMeshFace::adjacent(TopoMeshVertex vertex) const
{
    TopoMeshEdge e = record()->edge;
    do {
        if (e->origin == vertex) return e;
        e = e->next;
    } while (e != record()->edge);
    return {};
}

} // namespace znGeom
