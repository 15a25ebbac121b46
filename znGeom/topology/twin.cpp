#include "znGeom/topology/twin.h"

#include <algorithm>
#include <memory>
#include <tuple>
#include <utility>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/radix_sort.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

/// A half-edge without a twin, and the numbers of its ends.
struct OpenEdge
{
    std::uint32_t low, high;
    TopoMeshEdge edge;
};

void appendIfOpen(zn::vector<OpenEdge>& open, TopoMeshEdge e)
{
    if (e->twin) return;
    const auto a = static_cast<std::uint32_t>(e->origin.number());
    const auto b = static_cast<std::uint32_t>(endOf(e).number());
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

/// The places of the records, sorted by both ends; those of the same ends stay in their order.
std::unique_ptr<znUtil::KeyedIndex[]> sortByEnds(const zn::vector<OpenEdge>& open)
{
    const auto size = static_cast<size_t>(open.size());
    auto order = std::make_unique_for_overwrite<znUtil::KeyedIndex[]>(size);
    const auto scratch = std::make_unique_for_overwrite<znUtil::KeyedIndex[]>(size);
    znUtil::ThreadPool& pool = znUtil::ThreadPool::get();
    for (int i = 0; i < open.size(); ++i) order[static_cast<size_t>(i)] = {open[i].high, i};
    znUtil::radixSort(order.get(), scratch.get(), open.size(), pool);
    for (size_t i = 0; i < size; ++i) order[i].key = open[order[i].index].low;
    znUtil::radixSort(order.get(), scratch.get(), open.size(), pool);
    return order;
}

/// Pairs neighbours in sorted order, from the left. \param at  which one is where in this order
template <typename At>
void pairNeighbours(TopoMesh& mesh, int size, const At& at)
{
    bool paired = false;
    for (int i = 0; i + 1 < size; ++i) {
        const OpenEdge &first = at(i), &second = at(i + 1);
        if (first.low != second.low || first.high != second.high) continue;
        mesh.setTwins(first.edge, second.edge);
        paired = true;
        ++i;
    }
    if (!paired) return;
    TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
    mesh.modified(modification);
}

void printTime(const TopoMesh& mesh, znOS::StopWatch& watch)
{
    debugChannel().print("meshTwin: %d vertices: %f s\n", mesh.numVertices(), watch.stop());
}

} // namespace

void meshTwin(TopoMesh& mesh)
{
    znOS::StopWatch watch;
    const zn::vector<OpenEdge> open = collectOpenEdges(mesh);
    const std::unique_ptr<znUtil::KeyedIndex[]> order = sortByEnds(open);
    pairNeighbours(mesh, open.size(),
                   [&](int i) -> const OpenEdge& { return open[order[static_cast<size_t>(i)].index]; });
    printTime(mesh, watch);
}

void meshTwin(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces)
{
    znOS::StopWatch watch;
    zn::vector<OpenEdge> open = collectOpenEdges(faces);
    std::sort(open.begin(), open.end(), isBefore);
    pairNeighbours(mesh, open.size(), [&](int i) -> const OpenEdge& { return open[i]; });
    printTime(mesh, watch);
}

} // namespace znGeom
