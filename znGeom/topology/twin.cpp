#include "znGeom/topology/twin.h"

#include <algorithm>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/topology/internal/pair_by_ends.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

/// A half-edge without a twin, and the numbers of its ends.
struct OpenEdge
{
    int low, high;
    TopoMeshEdge edge;
};

zn::vector<OpenEdge> collectOpenEdges(const TopoMesh& mesh)
{
    zn::vector<OpenEdge> open;
    for (const TopoMeshFace face : facesOf(mesh))
        for (const TopoMeshEdge e : sidesOf(face)) {
            if (e->twin) continue;
            const int a = e->origin.number(), b = endOf(e).number();
            open.append({std::min(a, b), std::max(a, b), e});
        }
    return open;
}

} // namespace

void meshTwin(TopoMesh& mesh)
{
    znOS::StopWatch watch;
    const zn::vector<OpenEdge> open = collectOpenEdges(mesh);
    const auto visit = [&open](const auto& take) {
        for (const auto& [low, high, edge] : open) take(low, high, edge);
    };
    const auto pair = [&mesh](TopoMeshEdge first, TopoMeshEdge second) { mesh.setTwins(first, second); };
    if (internal::pairByEnds<TopoMeshEdge>(open.empty() ? 0 : mesh.vertexNumbers(), visit, pair)) {
        TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
        mesh.modified(modification);
    }
    debugChannel().print("meshTwin: %d vertices: %f s\n", mesh.numVertices(), watch.stop());
}

} // namespace znGeom
