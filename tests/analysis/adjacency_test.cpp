#include "znGeom/analysis/adjacency.h"

#include <algorithm>
#include <array>
#include <map>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"

using namespace znGeom;
using znTest::makeMesh;
using znTest::toVector;

namespace {

using Sets = std::vector<std::vector<int>>;

template <typename Adjacency>
Sets setsOf(const Adjacency& adjacency)
{
    Sets sets;
    for (int i = 0; i < adjacency.table().getNumSets(); ++i)
        sets.push_back(toVector(adjacency.triIndices(i), adjacency.numTris(i)));
    return sets;
}

void expectAllTables(const CompactMesh& mesh)
{
    const int* corners = mesh.getTrianglesRaw();
    const auto edge = [corners](int i) { return std::minmax({corners[i], corners[i / 3 * 3 + (i + 1) % 3]}); };
    std::multimap<std::pair<int, int>, int> edges;
    for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i) edges.emplace(edge(i), i / 3);
    Sets around(size_t(mesh.getNumVertices())), neighbours(around), across(size_t(mesh.getNumTriangles()));
    size_t maxNeighbours = 0, numAcross = 0;
    for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i) {
        around[size_t(corners[i])].push_back(i / 3);
        std::vector<int>& list = neighbours[size_t(corners[i])];
        for (const int corner : mesh.getTriangles()[i / 3].corners)
            if (corner != corners[i] && std::find(list.begin(), list.end(), corner) == list.end())
                list.push_back(corner);
        maxNeighbours = std::max(maxNeighbours, list.size());
        for (auto [at, end] = edges.equal_range(edge(i)); at != end; ++at)
            if (at->second != i / 3) across[size_t(i / 3)].push_back(at->second), ++numAcross;
    }

    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    MeshAdjVertices adjVertices;
    MeshTriAdjTris triAdjTris;
    meshAdjVertices(mesh, adjTris, adjVertices);
    meshTriAdjTris(mesh, triAdjTris);
    ASSERT_EQ(setsOf(adjTris), around);
    ASSERT_EQ(setsOf(triAdjTris), across);
    ASSERT_EQ(triAdjTris.table().elements.size(), int(numAcross));
    Sets found;
    for (int v = 0; v < adjVertices.numVertices; ++v)
        found.push_back(toVector(adjVertices.neighbours(v), adjVertices.numNeighbours(v)));
    ASSERT_EQ(found, neighbours);
    ASSERT_EQ(adjVertices.maxNeighbours, int(maxNeighbours));
}

} // namespace

TEST(Adjacency, TablesEqualBruteForce)
{
    znTest::Random random(1);
    for (int round = 0; round < 600; ++round) {
        SCOPED_TRACE(round);
        expectAllTables(znTest::makeAnyMesh(random, round));
    }
    CompactMesh scan;
    znTest::makeNoisyScan(scan, 40, 30);
    for (const CompactMesh& mesh : {CompactMesh(), makeMesh(5, {}), makeMesh(1, {{{0, 0, 0}}}), scan})
        expectAllTables(mesh);
    // A vertex of very many edges, lowest and highest of its neighbours by number.
    for (const int hub : {0, 200}) {
        std::vector<std::array<int, 3>> triangles;
        for (int i = 0; i < 300; ++i) {
            const int a = 1 + random.below(199), b = 1 + random.below(199);
            triangles.push_back({hub, a, b});
            if (random.oneIn(10)) triangles.push_back({hub, hub, a});
            if (random.oneIn(10)) triangles.push_back({b, a, hub});
        }
        expectAllTables(makeMesh(201, triangles));
    }
    // Many triangles on one edge ask for more room than one neighbour per edge.
    std::vector<std::array<int, 3>> sheets;
    while (sheets.size() < 200) {
        sheets.push_back({0, 1, 2 + int(sheets.size())});
        expectAllTables(makeMesh(202, sheets));
    }
}

TEST(Adjacency, LinesOfTheLog)
{
    CompactMesh mesh;
    znTest::makeCube(mesh);
    znTest::LogRecorder log;
    MeshAdjVertices adjVertices;
    MeshTriAdjTris triAdjTris;
    meshAdjVertices(mesh, znTest::adjTrisOf(mesh), adjVertices);
    meshTriAdjTris(mesh, triAdjTris);
    EXPECT_EQ(withoutTimes(log), (znTest::Lines{"MeshAdjTris: 8 vertices 12 triangles #\n",
                                                "MeshAdjVertices: 8 vertices, 12 triangles: # s\n",
                                                "MeshTriAdjTris: 8 vertices 12 triangles #\n"}));
}

TEST(SortAdjTris, WalksTheFanFromTheFirstTriangle)
{
    // Around vertex 0: (0,1,2) (0,2,3) (0,3,4) (0,4,1), given in no particular order.
    const MeshTriangle triangles[] = {{{0, 1, 2}}, {{3, 4, 0}}, {{2, 3, 0}}, {{1, 0, 4}}};
    const auto sorted = [&triangles](const std::vector<int>& around) {
        zn::vector<int> result(9);
        sortAdjTris(0, int(around.size()), around.data(), triangles, result);
        return toVector(result.data(), result.size());
    };
    using Fan = std::vector<int>;
    EXPECT_EQ(sorted({0, 1, 2, 3}), (Fan{0, 2, 1, 3}));
    EXPECT_EQ(sorted({1, 0, 2}), (Fan{1, 0, 2})) << "an open fan from its middle: to the border, then what is left";
    EXPECT_EQ(sorted({0, 1, 2}), (Fan{0, 2, 1}));
    EXPECT_EQ(sorted({0}), Fan{0});
    EXPECT_EQ(sorted({}), Fan());
}

TEST(SharedEdge, FindsTheFirstTriangleOfEitherWinding)
{
    // 1 lies across (0,1) of 0 with the same winding sense, 2 is a third triangle there, 3 touches at vertex 2 only.
    const CompactMesh mesh = makeMesh(7, {{{0, 1, 2}}, {{3, 0, 1}}, {{1, 0, 4}}, {{2, 5, 6}}});
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    const int none = -7;
    const auto across = [&](int triangle, int edge) {
        std::array<int, 3> result{0, none, 9};
        result[0] = getSharedEdgeAdjacentTriangle(triangle, edge, mesh.getTriangles(), adjTris, result[1], result[2]);
        return result;
    };
    EXPECT_EQ(across(0, 0), (std::array{1, 1, 2}));
    EXPECT_EQ(across(2, 0), (std::array{1, 0, 0}));
    for (const int edge : {1, 2}) EXPECT_EQ(across(0, edge), (std::array{0, none, -1}));
}
