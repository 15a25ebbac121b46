// The octree over a mesh's vertices, with the triangles of each leaf, on all threads and on one.
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/foundation/threads.h"
#include "znGeom/spatial/trees/octree.h"
#include "znGeom/spatial/trees/octree_partition.h"

#include <memory>
#include <vector>

namespace {

using bench::Input;
using znGeom::CompactMesh;

struct Index
{
    std::unique_ptr<znGeom::Octree> octree;
    znGeom::OctreeTris triangles;
};

std::unique_ptr<Index> buildOnAllThreads(const CompactMesh& mesh)
{
    auto index = std::make_unique<Index>();
    znGeom::BoundingBox box;
    znGeom::meshBoundingBox(mesh, box);
    index->octree = std::make_unique<znGeom::Octree>(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 16);
    znGeom::computeOctreeTris(mesh, *index->octree, index->triangles);
    return index;
}

/// From inside a body, where every loop runs on the thread that it is called on.
std::unique_ptr<Index> buildOnOneThread(const CompactMesh& mesh)
{
    std::unique_ptr<Index> index;
    znUtil::parallelFor(znUtil::ThreadPool::get(), 1, [&](znUtil::Slice, int threadIndex) {
        if (threadIndex == 0) index = buildOnAllThreads(mesh);
    });
    return index;
}

/// Every triangle is in the leaf in which it begins, and in each leaf once.
bool holdsEveryTriangle(const CompactMesh& mesh, const Index& index)
{
    std::vector<int> leaves(static_cast<std::size_t>(mesh.getNumTriangles()), 0);
    for (int leaf = 0; leaf < index.octree->numLeaves(); ++leaf) {
        const int* triangles = index.triangles.firstTri(leaf);
        for (int i = 0; i < index.triangles.numTris(leaf); ++i) {
            if (i > 0 && triangles[i] <= triangles[i - 1]) return false;
            ++leaves[static_cast<std::size_t>(triangles[i])];
        }
    }
    return std::find(leaves.begin(), leaves.end(), 0) == leaves.end();
}

using Build = std::unique_ptr<Index> (*)(const CompactMesh&);

bool measureBuild(const char* work, Build build)
{
    return bench::measure({work, "znGeom",
                           [=](const Input& input) {
                               const auto mesh = bench::toCompact(input.soup());
                               return holdsEveryTriangle(*mesh, *build(*mesh));
                           },
                           [=](benchmark::State& state, const Input& input) {
                               const auto mesh = bench::toCompact(input.soup());
                               bench::timeWork(
                                   state, [&] { return mesh.get(); },
                                   [=](const CompactMesh* subject) { return build(*subject); });
                           }});
}

[[maybe_unused]] const bool listed[] = {
    measureBuild("octree", buildOnAllThreads),
    measureBuild("octree_one_thread", buildOnOneThread),
};

} // namespace
