#include "znGeom/analysis/boundaries.h"

#include <functional>
#include <numeric>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "znGeom/editing/partition.h"

using namespace znGeom;
using znTest::makeMesh;

namespace {

using Loops = std::vector<std::vector<int>>;

Loops loopsOf(const MeshBoundaries& boundaries)
{
    Loops loops;
    for (int i = 0; i < boundaries.size(); ++i) loops.emplace_back(boundaries.getStart(i), boundaries.getEnd(i));
    return loops;
}

struct Walks
{
    CompactMesh mesh;
    MeshAdjTris adjTris;
    MeshAdjVertices adjVertices;

    explicit Walks(const CompactMesh& source) : mesh(source), adjTris(znTest::adjTrisOf(mesh))
    {
        meshAdjVertices(mesh, adjTris, adjVertices);
    }
    Loops boundary() const
    {
        MeshBoundaries result;
        meshComputeBoundary(mesh, adjTris, adjVertices, result);
        return loopsOf(result);
    }
    /// The walk written down plainly: from every start in turn, with a set of all directed edges that count.
    Loops expected(const std::vector<int>& starts, const std::function<bool(int)>& counts,
                   const std::function<bool(int)>& onSeam) const
    {
        const MeshTriangle* triangles = mesh.getTriangles();
        std::set<std::pair<int, int>> directed;
        for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i)
            if (counts(i / 3)) directed.insert({triangles[i / 3][i % 3], triangles[i / 3][(i + 1) % 3]});
        const auto step = [&](int v, int& next) {
            for (const int t : adjTris.around(v)) {
                if (!counts(t)) continue;
                next = Boundary::findEdge(v, triangles[t]);
                const bool border = onSeam(next) || adjVertices.numNeighbours(next) != adjTris.numTris(next);
                if (border && !directed.count({next, v})) return true;
            }
            return false;
        };
        Loops loops;
        std::set<int> visited;
        for (const int start : starts) {
            std::vector<int> loop;
            bool unvisited = visited.insert(start).second;
            for (int current = start, next = -1; unvisited && step(current, next); current = next) {
                loop.push_back(current);
                unvisited = visited.insert(next).second;
            }
            if (!loop.empty()) loops.push_back(loop);
        }
        return loops;
    }
};

} // namespace

TEST(Boundaries, LoopsByHand)
{
    CompactMesh sphere, grid, ring;
    znTest::makeSphere(sphere, 2);
    znTest::makeGrid(grid, 3, 3);
    znTest::makeAnnulus(ring, 3);
    const std::pair<CompactMesh, Loops> expected[] = {
        {CompactMesh(), {}},
        {makeMesh(3, {}), {}},
        {sphere, {}},
        {grid, {{0, 1, 2, 5, 8, 7, 6, 3}}},
        {ring, {{0, 4, 2}, {1, 3, 5}}},
        // Borders that touch are cut, by the order of the triangles where they touch.
        {makeMesh(5, {{{0, 1, 2}}, {{2, 3, 4}}}), {{0, 1, 2}, {3, 4}}},
        {makeMesh(5, {{{2, 3, 4}}, {{0, 1, 2}}}), {{0, 1, 2, 3, 4}}}};
    for (const auto& [mesh, loops] : expected) EXPECT_EQ(Walks(mesh).boundary(), loops);

    EXPECT_EQ(Boundary::findEdge(6, MeshTriangle{{7, 5, 6}}), 7);
    EXPECT_EQ(Boundary::findEdge(4, MeshTriangle{{7, 5, 6}}), -1);
    MeshSequence sequence(zn::vector<zn::vector<int>>{{4, 5}, {}, {6}});
    EXPECT_EQ(loopsOf(MeshBoundaries(sequence)), (Loops{{4, 5}, {}, {6}}));
}

TEST(Boundaries, OfMeshesAndTheirRegionsEqualThePlainWalk)
{
    znTest::Random random(1);
    CompactMesh pair;
    znTest::makeGrid(pair, 3, 2);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const Walks walks(round == 0 ? pair : znTest::makeAnyMesh(random, round));
        std::vector<int> all(size_t(walks.mesh.getNumVertices()));
        std::iota(all.begin(), all.end(), 0);
        ASSERT_EQ(walks.boundary(), walks.expected(
                                        all, [](int) { return true; }, [](int) { return false; }));

        zn::list<zn::Reference<MeshSubset>> subsets;
        MeshPartition(walks.mesh, walks.adjTris, round == 0 ? 2 : random.below(7)).compute(subsets);
        Remap regionOf;
        ArrayOfSets regionsOf;
        meshTriSubsetMembership(walks.mesh, subsets, regionOf);
        meshVertSubsetMembership(walks.mesh, subsets, regionsOf);
        int region = 0;
        for (const auto& subset : subsets) {
            if (round % 2) std::reverse(subset->vertices, subset->vertices + subset->numVertices);
            MeshBoundaries result;
            meshComputeSubsetBoundary(walks.mesh, *subset, region, walks.adjTris, walks.adjVertices, regionsOf,
                                      regionOf, result);
            const auto counts = [&](int t) { return regionOf(t) == region; };
            const auto onSeam = [&](int v) { return regionsOf.getSetSize(v) > 1; };
            const Loops expected =
                round == 0 ? region == 0 ? Loops{{0, 1, 4, 3}} : Loops{{1, 2, 5, 4}} // the seam in both directions
                           : walks.expected(znTest::toVector(subset->vertices, subset->numVertices), counts, onSeam);
            ASSERT_EQ(loopsOf(result), expected);
            ++region;
        }
    }
}
