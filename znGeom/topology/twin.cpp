#include "znGeom/topology/twin.h"

#include <algorithm>
#include <tuple>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/topology/internal/finish_edit.h"
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

void appendIfOpen(zn::vector<OpenEdge>& open, TopoMeshEdge e)
{
    if (e->twin) return;
    const int a = e->origin.number(), b = endOf(e).number();
    open.append({std::min(a, b), std::max(a, b), e});
}

zn::vector<OpenEdge> collectOpenEdges(const TopoMesh& mesh)
{
    zn::vector<OpenEdge> open;
    for (const TopoMeshFace face : facesOf(mesh))
        for (const TopoMeshEdge e : sidesOf(face)) appendIfOpen(open, e);
    return open;
}

/// Those that leave the corners of some faces.
zn::vector<OpenEdge> collectOpenEdges(const zn::vector<TopoMeshFace>& faces)
{
    zn::vector<TopoMeshVertex> corners;
    for (const TopoMeshFace face : faces)
        for (const TopoMeshEdge e : sidesOf(face)) corners.append(e->origin);
    std::sort(corners.begin(), corners.end());
    zn::vector<OpenEdge> open;
    for (auto* corner = corners.begin(); corner != corners.end(); ++corner)
        if (corner == corners.begin() || corner[0] != corner[-1])
            for (const TopoMeshEdge e : outgoingOf(*corner)) appendIfOpen(open, e);
    return open;
}

/// How many steps it is from the first half-edge of a face.
int placeInFace(TopoMeshEdge e)
{
    int place = 0;
    for (TopoMeshEdge step = e->face->edge; step != e; step = step->next) ++place;
    return place;
}

bool isBefore(const OpenEdge& a, const OpenEdge& b)
{
    if (a.low != b.low || a.high != b.high) return std::tie(a.low, a.high) < std::tie(b.low, b.high);
    if (a.edge->face != b.edge->face) return a.edge->face < b.edge->face;
    return placeInFace(a.edge) < placeInFace(b.edge);
}

void finish(TopoMesh& mesh, bool isChanged, znOS::StopWatch& watch)
{
    if (isChanged) {
        TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
        mesh.modified(modification);
    }
    debugChannel().print("meshTwin: %d vertices: %f s\n", mesh.numVertices(), watch.stop());
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
    finish(mesh, internal::pairByEnds<TopoMeshEdge>(open.empty() ? 0 : mesh.vertexNumbers(), visit, pair), watch);
}

bool internal::pairOpenEdges(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces)
{
    zn::vector<OpenEdge> open = collectOpenEdges(faces);
    std::sort(open.begin(), open.end(), isBefore);
    bool isPaired = false;
    for (int i = 0; i + 1 < open.size(); ++i) {
        const OpenEdge &first = open[i], &second = open[i + 1];
        if (first.low != second.low || first.high != second.high) continue;
        mesh.setTwins(first.edge, second.edge);
        isPaired = true;
        ++i;
    }
    return isPaired;
}

void meshTwin(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces)
{
    znOS::StopWatch watch;
    finish(mesh, internal::pairOpenEdges(mesh, faces), watch);
}

void internal::finishEdit(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces)
{
    znOS::StopWatch watch;
    pairOpenEdges(mesh, faces);
    finish(mesh, true, watch);
}

} // namespace znGeom
