#include "znGeom/analysis/adjacency.h"

#include <algorithm>
#include <array>
#include <map>
#include <regex>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"

using namespace znGeom;

namespace {

using Sets = std::vector<std::vector<int>>;

CompactMesh makeMesh(int numVertices, const std::vector<std::array<int, 3>>& triangles)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(numVertices);
    mesh.copyTriangles(static_cast<int>(triangles.size()), triangles.empty() ? nullptr : triangles[0].data());
    return mesh;
}

/// Triangles among few vertices: degenerate, doubled and non-manifold ones are common; the last vertices stay unused.
CompactMesh makeTangle(znTest::Random& random, int numVertices, int numTriangles)
{
    std::vector<std::array<int, 3>> triangles(static_cast<size_t>(numTriangles));
    for (auto& triangle : triangles)
        for (int& corner : triangle) corner = random.below(std::max(1, numVertices - 2));
    return makeMesh(numVertices, triangles);
}

template <typename Adjacency>
std::vector<int> setOf(const Adjacency& adjacency, int index)
{
    return {adjacency.triIndices(index), adjacency.triIndices(index) + adjacency.numTris(index)};
}

Sets expectedAdjTris(const CompactMesh& mesh)
{
    Sets sets(static_cast<size_t>(mesh.getNumVertices()));
    for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i)
        sets[static_cast<size_t>(mesh.getTrianglesRaw()[i])].push_back(i / 3);
    return sets;
}

std::vector<int> expectedNeighbours(const CompactMesh& mesh, int vertex, const std::vector<int>& tris)
{
    std::vector<int> neighbours;
    for (const int triangle : tris)
        for (const int corner : mesh.getTriangles()[triangle].corners)
            if (corner != vertex && std::find(neighbours.begin(), neighbours.end(), corner) == neighbours.end())
                neighbours.push_back(corner);
    return neighbours;
}

Sets expectedTriAdjTris(const CompactMesh& mesh)
{
    const auto edge = [&mesh](int triangle, int slot) {
        const MeshTriangle& t = mesh.getTriangles()[triangle];
        return std::minmax({t[slot], t[(slot + 1) % 3]});
    };
    std::multimap<std::pair<int, int>, int> edges;
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        for (int slot = 0; slot < 3; ++slot) edges.emplace(edge(t, slot), t);
    Sets sets(static_cast<size_t>(mesh.getNumTriangles()));
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        for (int slot = 0; slot < 3; ++slot)
            for (auto [at, end] = edges.equal_range(edge(t, slot)); at != end; ++at)
                if (at->second != t) sets[static_cast<size_t>(t)].push_back(at->second);
    return sets;
}

void expectAllTables(const CompactMesh& mesh)
{
    MeshAdjTris adjTris;
    MeshAdjVertices adjVertices;
    MeshTriAdjTris triAdjTris;
    meshAdjTris(mesh, adjTris);
    meshAdjVertices(mesh, adjTris, adjVertices);
    meshTriAdjTris(mesh, triAdjTris);

    const Sets around = expectedAdjTris(mesh), across = expectedTriAdjTris(mesh);
    ASSERT_EQ(adjTris.getNumVertices(), mesh.getNumVertices());
    ASSERT_EQ(adjVertices.numVertices, mesh.getNumVertices());
    ASSERT_EQ(triAdjTris.getNumTriangles(), mesh.getNumTriangles());
    size_t maxNeighbours = 0, numAcross = 0;
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const auto& expected = around[static_cast<size_t>(v)];
        ASSERT_EQ(setOf(adjTris, v), expected) << "vertex " << v;
        const std::vector<int> neighbours(adjVertices.neighbours(v),
                                          adjVertices.neighbours(v) + adjVertices.numNeighbours(v));
        ASSERT_EQ(neighbours, expectedNeighbours(mesh, v, expected)) << "vertex " << v;
        maxNeighbours = std::max(maxNeighbours, neighbours.size());
    }
    EXPECT_EQ(adjVertices.maxNeighbours, static_cast<int>(maxNeighbours));
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        ASSERT_EQ(setOf(triAdjTris, t), across[static_cast<size_t>(t)]) << "triangle " << t;
        numAcross += across[static_cast<size_t>(t)].size();
    }
    EXPECT_EQ(triAdjTris.table().elements.size(), static_cast<int>(numAcross));
}

} // namespace

TEST(Adjacency, tablesEqualBruteForceOnRandomTangles)
{
    znTest::Random random(1);
    for (int round = 0; round < 300; ++round) {
        const int numVertices = 1 + random.below(12);
        SCOPED_TRACE(round);
        expectAllTables(makeTangle(random, numVertices, random.below(40)));
    }
}

TEST(Adjacency, tablesEqualBruteForceOnShapes)
{
    CompactMesh mesh;
    expectAllTables(mesh);
    mesh.resizeVertexArray(5);
    expectAllTables(mesh);
    znTest::makeGrid(mesh, 17, 9);
    expectAllTables(mesh);
    znTest::makeMobiusBand(mesh, 9);
    expectAllTables(mesh);
    znTest::makeNoisyScan(mesh, 40, 30);
    expectAllTables(mesh);
}

/// A vertex of very many edges, lowest and highest of its neighbours by number, with doubled and degenerate triangles.
TEST(Adjacency, tablesEqualBruteForceAroundHubs)
{
    for (const int hub : {0, 200}) {
        znTest::Random random(2);
        std::vector<std::array<int, 3>> triangles;
        for (int i = 0; i < 300; ++i) {
            const int a = 1 + random.below(199), b = 1 + random.below(199);
            triangles.push_back({hub, a, b});
            if (random.oneIn(10)) triangles.push_back({hub, hub, a});
            if (random.oneIn(10)) triangles.push_back({b, a, hub});
        }
        expectAllTables(makeMesh(201, triangles));
    }
}

/// Many triangles on one edge ask for more room than one neighbour an edge.
TEST(Adjacency, groupsBeyondPairsFitTheTable)
{
    for (const int sheets : {3, 40, 200}) {
        std::vector<std::array<int, 3>> triangles;
        for (int i = 0; i < sheets; ++i) triangles.push_back({0, 1, 2 + i});
        expectAllTables(makeMesh(2 + sheets, triangles));
    }
    const CompactMesh doubled = makeMesh(3, {{{0, 1, 2}}, {{0, 1, 2}}});
    MeshTriAdjTris across;
    meshTriAdjTris(doubled, across);
    EXPECT_EQ(setOf(across, 0), (std::vector<int>{1, 1, 1}));
}

TEST(Adjacency, linesOfTheLog)
{
    CompactMesh mesh;
    znTest::makeCube(mesh);
    znTest::LogRecorder log;
    MeshAdjTris adjTris;
    MeshAdjVertices adjVertices;
    MeshTriAdjTris triAdjTris;
    meshAdjTris(mesh, adjTris);
    meshAdjVertices(mesh, adjTris, adjVertices);
    meshTriAdjTris(mesh, triAdjTris);
    const char* const expected[] = {"MeshAdjTris: 8 vertices 12 triangles \\d+\\.\\d{6}\n",
                                    "MeshAdjVertices: 8 vertices, 12 triangles: \\d+\\.\\d{6} s\n",
                                    "MeshTriAdjTris: 8 vertices 12 triangles \\d+\\.\\d{6}\n"};
    ASSERT_EQ(log.lines().size(), 3u);
    for (size_t i = 0; i < 3; ++i) EXPECT_TRUE(std::regex_match(log.lines()[i], std::regex(expected[i])));
}

TEST(SortAdjTris, walksTheFanFromTheFirstTriangle)
{
    // Around vertex 0: (0,1,2) (0,2,3) (0,3,4) (0,4,1), given in no order.
    const MeshTriangle triangles[] = {{{0, 1, 2}}, {{3, 4, 0}}, {{2, 3, 0}}, {{1, 0, 4}}};
    zn::vector<int> sorted;
    const int closed[] = {0, 1, 2, 3};
    sortAdjTris(0, 4, closed, triangles, sorted);
    EXPECT_EQ(sorted, (zn::vector<int>{0, 2, 1, 3}));

    // An open fan from its middle: to the boundary, and on with what is left.
    const int open[] = {1, 0, 2};
    sortAdjTris(0, 3, open, triangles, sorted);
    EXPECT_EQ(sorted, (zn::vector<int>{1, 0, 2}));
    const int fromStart[] = {0, 1, 2};
    sortAdjTris(0, 3, fromStart, triangles, sorted);
    EXPECT_EQ(sorted, (zn::vector<int>{0, 2, 1}));

    sortAdjTris(0, 1, closed, triangles, sorted);
    EXPECT_EQ(sorted, (zn::vector<int>{0}));
    sortAdjTris(0, 0, closed, triangles, sorted);
    EXPECT_TRUE(sorted.empty());
}

TEST(SharedEdge, findsTheFirstTriangleOfEitherWinding)
{
    // 1 lies across (0,1) of 0 with the same winding sense, 2 is a third triangle there, 3 touches at vertex 2 only.
    const CompactMesh mesh = makeMesh(7, {{{0, 1, 2}}, {{3, 0, 1}}, {{1, 0, 4}}, {{2, 5, 6}}});
    MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    int neighbour = -7, corner = 9;
    EXPECT_TRUE(getSharedEdgeAdjacentTriangle(0, 0, mesh.getTriangles(), adjTris, neighbour, corner));
    EXPECT_EQ(neighbour, 1);
    EXPECT_EQ(corner, 2);
    EXPECT_TRUE(getSharedEdgeAdjacentTriangle(2, 0, mesh.getTriangles(), adjTris, neighbour, corner));
    EXPECT_EQ(neighbour, 0);
    EXPECT_EQ(corner, 0);
    neighbour = -7;
    for (const int edge : {1, 2}) {
        EXPECT_FALSE(getSharedEdgeAdjacentTriangle(0, edge, mesh.getTriangles(), adjTris, neighbour, corner));
        EXPECT_EQ(neighbour, -7);
        EXPECT_EQ(corner, -1);
    }
}
