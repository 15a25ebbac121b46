#include "znGeom/topology/twin.h"

#include <memory>
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

zn::vector<OpenEdge> collectOpenEdges(const TopoMesh& mesh)
{
    zn::vector<OpenEdge> open;
    for (const TopoMeshFace face : facesOf(mesh))
        for (const TopoMeshEdge e : sidesOf(face)) {
            if (e->twin) continue;
            const auto a = static_cast<std::uint32_t>(e->origin.number());
            const auto b = static_cast<std::uint32_t>(endOf(e).number());
            open.append({std::min(a, b), std::max(a, b), e});
        }
    return open;
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

/// Pairs neighbours in sorted order, from the left. \return whether there was a pair
bool pairNeighbours(TopoMesh& mesh, const zn::vector<OpenEdge>& open, const znUtil::KeyedIndex* order)
{
    bool paired = false;
    for (int i = 0; i + 1 < open.size(); ++i) {
        const OpenEdge &first = open[order[i].index], &second = open[order[i + 1].index];
        if (first.low != second.low || first.high != second.high) continue;
        mesh.setTwins(first.edge, second.edge);
        paired = true;
        ++i;
    }
    return paired;
}

} // namespace

void meshTwin(TopoMesh& mesh)
{
    znOS::StopWatch watch;
    const zn::vector<OpenEdge> open = collectOpenEdges(mesh);
    if (pairNeighbours(mesh, open, sortByEnds(open).get())) {
        TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
        mesh.modified(modification);
    }
    debugChannel().print("meshTwin: %d vertices: %f s\n", mesh.numVertices(), watch.stop());
}

} // namespace znGeom
