#include "znGeom/editing/duplicate_triangles.h"

#include <algorithm>
#include <memory>
#include <span>
#include <tuple>

#include "znGeom/editing/delete_selected.h"
#include "znGeom/editing/select.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/counting_sort.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

using Triangles = zn::vector<int>;

bool samePlace(const MeshVertex& a, const MeshVertex& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

/// The triangles that have collapsed, by indices and by positions.
struct Collapsed
{
    Triangles repeated, coincident;
};

Collapsed findCollapsed(const CompactMesh& mesh, Slice slice)
{
    const MeshTriangle* triangles = mesh.getTriangles();
    const MeshVertex* vertices = mesh.getVertices();
    Collapsed found;
    for (int t = slice.begin; t < slice.end; ++t) {
        const MeshTriangle& triangle = triangles[t];
        const MeshVertex &a = vertices[triangle[0]], &b = vertices[triangle[1]], &c = vertices[triangle[2]];
        if (repeatsVertex(triangle))
            found.repeated.append(t);
        else if (samePlace(a, b) || samePlace(a, c) || samePlace(b, c))
            found.coincident.append(t);
    }
    return found;
}

/// A triangle as its lowest corner sees it.
struct SeenTriangle
{
    int middle, highest, number;

    friend bool operator<(const SeenTriangle& a, const SeenTriangle& b)
    {
        return std::tie(a.middle, a.highest, a.number) < std::tie(b.middle, b.highest, b.number);
    }
    bool sameCorners(const SeenTriangle& other) const { return middle == other.middle && highest == other.highest; }
};

/// All triangles, gathered by their lowest corners.
class TriangleBuckets
{
public:
    TriangleBuckets(const CompactMesh& mesh, ThreadPool& pool)
        : m_starts(mesh.getNumVertices() + 1),
          m_seen(std::make_unique_for_overwrite<SeenTriangle[]>(static_cast<size_t>(mesh.getNumTriangles())))
    {
        const MeshTriangle* triangles = mesh.getTriangles();
        const int numTriangles = mesh.getNumTriangles(), numThreads = pool.getNumThreads();
        const auto visit = [=](int thread, const auto& take) {
            const Slice slice(numTriangles, thread, numThreads);
            for (int t = slice.begin; t < slice.end; ++t) {
                const auto [a, b, c] = triangles[t].corners;
                const int low = std::min(a, b), high = std::max(a, b);
                take(std::min(low, c), SeenTriangle{std::max(low, std::min(high, c)), std::max(high, c), t});
            }
        };
        znUtil::CountingSort sort(pool, m_starts.size());
        sort.count(visit, m_starts.data());
        sort.place(visit, [this](int place, const SeenTriangle& seen) { m_seen[static_cast<size_t>(place)] = seen; });
    }

    /// The triangles with these lowest corners that have an equal one of lower number. Changes the order in buckets.
    Triangles findRepeated(Slice lowest)
    {
        Triangles found;
        for (int vertex = lowest.begin; vertex < lowest.end; ++vertex) {
            const std::span seen(m_seen.get() + m_starts[vertex], m_seen.get() + m_starts[vertex + 1]);
            std::sort(seen.begin(), seen.end());
            for (size_t i = 1; i < seen.size(); ++i)
                if (seen[i].sameCorners(seen[i - 1])) found.append(seen[i].number);
        }
        return found;
    }

private:
    zn::vector<int> m_starts; ///< for each vertex the beginning of its bucket, and the end of the last one
    std::unique_ptr<SeenTriangle[]> m_seen;
};

Triangles findRepeated(const CompactMesh& mesh, ThreadPool& pool)
{
    TriangleBuckets buckets(mesh, pool);
    return znUtil::parallelReduce(
        pool, mesh.getNumVertices(), Triangles(), [&buckets](Slice slice) { return buckets.findRepeated(slice); },
        [](Triangles& all, Triangles& found) { all.append(found); });
}

} // namespace

bool meshDuplicateTris(const CompactMesh& mesh, MeshDuplicateTrisResult& result, ThreadPool& pool)
{
    znOS::StopWatch watch;
    Collapsed collapsed = znUtil::parallelReduce(
        pool, mesh.getNumTriangles(), Collapsed(), [&mesh](Slice slice) { return findCollapsed(mesh, slice); },
        [](Collapsed& all, Collapsed& found) {
            all.repeated.append(found.repeated);
            all.coincident.append(found.coincident);
        });
    result.repeatedCorners.swap(collapsed.repeated);
    result.coincidentCorners.swap(collapsed.coincident);
    result.duplicates = findRepeated(mesh, pool);
    debugChannel().print("meshDuplicateTris:  verts(%d) tris(%d) dup(%d) degenerate(%d) %f s\n", mesh.getNumVertices(),
                         mesh.getNumTriangles(), result.duplicates.size(),
                         result.repeatedCorners.size() + result.coincidentCorners.size(), watch.stop());
    return bool(result);
}

void MeshDuplicateTrisResult::getBadTriangles(const CompactMesh& mesh, zn::vector<int>& triangles) const
{
    BitVector bad(*this ? mesh.getNumTriangles() : 0);
    for (const auto* list : {&duplicates, &repeatedCorners, &coincidentCorners})
        bad.setBits(list->size(), list->data());
    triangles = listMembers(bad, bad.getSize());
}

void meshRemoveDuplicateTris(CompactMesh& mesh, const MeshAdjTris& adjacency, const MeshDuplicateTrisResult& result)
{
    if (!result) return;
    debugChannel().print("znGeom::meshRemoveDuplicateTris\n");
    debugChannel().print("           vertices(%d) triangles(%d)\n", mesh.getNumVertices(), mesh.getNumTriangles());
    znOS::StopWatch watch;
    BitVector& selected = mesh.getSelectedTriangles();
    selected.resize(mesh.getNumTriangles());
    for (const auto* list : {&result.duplicates, &result.repeatedCorners, &result.coincidentCorners})
        selected.setBits(list->size(), list->data());
    MeshSelect(mesh, adjacency).selectVerticesFromTriangles();
    debugChannel().print("  selected %d duplicate/degenerate tris: %f s\n", selected.getNumSetBits(), watch.clear());
    MeshDeleteSelected{mesh}();
}

void meshRemoveDuplicateTris(CompactMesh& mesh, const MeshAdjTris& adjacency)
{
    MeshDuplicateTrisResult result;
    if (meshDuplicateTris(mesh, result)) meshRemoveDuplicateTris(mesh, adjacency, result);
}

} // namespace znGeom
