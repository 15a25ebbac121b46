#include "znGeom/analysis/edge_sides.h"

#include <cmath>
#include <map>
#include <numbers>
#include <numeric>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/tangles.h"
#include "znGeom/analysis/border_loops.h"
#include "znGeom/analysis/census.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/analysis/fold_angle.h"
#include "znGeom/analysis/path_length.h"
#include "znGeom/analysis/triangle_components.h"
#include "znGeom/analysis/volume.h"

using namespace znGeom;
using znTest::makeMesh;

namespace {

using Edge = std::pair<int, int>;

MeshEdgeSides sidesOf(const CompactMesh& mesh)
{
    MeshEdgeSides sides;
    meshEdgeSides(mesh, sides);
    return sides;
}

/// The edges of a mesh by their ends, written down plainly.
std::map<Edge, std::vector<int>> plainEdges(const CompactMesh& mesh)
{
    std::map<Edge, std::vector<int>> edges;
    for (int side = 0; side < 3 * mesh.getNumTriangles(); ++side) {
        const MeshTriangle& triangle = mesh.getTriangles()[side / 3];
        const auto [low, high] = std::minmax({triangle[side % 3], triangle[(side + 1) % 3]});
        if (low != high) edges[{low, high}].push_back(side);
    }
    return edges;
}

std::set<int> trianglesOf(const std::vector<int>& sides)
{
    std::set<int> triangles;
    for (const int side : sides) triangles.insert(side / 3);
    return triangles;
}

/// Labels that spread over what `spread` calls together until nothing changes.
template <typename Spread>
std::vector<int> spreadLabels(int count, const Spread& spread)
{
    std::vector<int> labels(count), before;
    std::iota(labels.begin(), labels.end(), 0);
    while (before != labels) {
        before = labels;
        spread([&labels](int a, int b) { labels[a] = labels[b] = std::min(labels[a], labels[b]); });
    }
    return labels;
}

CompactMesh withPositions(const std::vector<std::array<float, 3>>& positions,
                          const std::vector<std::array<int, 3>>& triangles)
{
    CompactMesh mesh = makeMesh(int(positions.size()), triangles);
    for (size_t v = 0; v < positions.size(); ++v) mesh.getVertices()[v].set(positions[v].data());
    return mesh;
}

/// 0 1 2 3 are the corners of a square about the origin of side 4, 4 5 6 7 those of one of side 2 in it.
CompactMesh frame(const std::vector<std::array<int, 3>>& triangles)
{
    return withPositions(
        {{-2, -2, 0}, {2, -2, 0}, {2, 2, 0}, {-2, 2, 0}, {-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}, triangles);
}

} // namespace

TEST(EdgeSides, andTheCensusEqualAPlainList)
{
    znTest::Random random(1);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : znTest::makeAnyMesh(random, round);
        const MeshEdgeSides sides = sidesOf(mesh);
        const auto expected = plainEdges(mesh);
        ASSERT_EQ(sides.getNumEdges(), int(expected.size()));
        MeshEdgeCensus counted;
        std::set<int> onBoundary;
        std::map<int, int> valences;
        for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i) valences[mesh.getTrianglesRaw()[i]] = 0;
        for (int edge = 0; const auto& [ends, around] : expected) {
            ASSERT_EQ(std::vector<int>(sides.sides(edge).begin(), sides.sides(edge).end()), around);
            ++edge, ++valences[ends.first], ++valences[ends.second];
            const size_t triangles = trianglesOf(around).size();
            const auto up = std::count_if(around.begin(), around.end(), [&ends = ends, &mesh](int side) {
                return mesh.getTrianglesRaw()[side] == ends.first;
            });
            if (triangles == 1) onBoundary.insert({ends.first, ends.second});
            counted.boundary += triangles == 1;
            counted.nonManifold += triangles > 2;
            counted.unbalanced += triangles > 1 && 2 * up != std::ssize(around);
            counted.longest = std::max(counted.longest, double(ends.second - ends.first)); // all lie on a line
        }
        const MeshEdgeCensus census = meshCountEdges(mesh, sides);
        ASSERT_EQ(
            std::tuple(census.edges, census.boundary, census.boundaryVertices, census.nonManifold, census.unbalanced),
            std::tuple(int(expected.size()), counted.boundary, int(onBoundary.size()), counted.nonManifold,
                       counted.unbalanced));
        ASSERT_EQ(census.longest, counted.longest);

        const MeshVertexCensus vertices = meshCountVertices(mesh, sides);
        ASSERT_EQ(vertices.unused, mesh.getNumVertices() - int(valences.size()));
        const auto byValence = [](const auto& a, const auto& b) { return a.second < b.second; };
        const auto [least, most] = std::minmax_element(valences.begin(), valences.end(), byValence);
        ASSERT_EQ(vertices.minValence, valences.empty() ? -1 : least->second);
        ASSERT_EQ(vertices.maxValence, valences.empty() ? -1 : most->second);
    }
}

TEST(MeshCensus, leavesOutWhatIsNotFinite)
{
    const float inf = INFINITY;
    const CompactMesh mesh = withPositions({{NAN, 0, 0}, {1, 2, 3}, {4, 6, 3}, {0, -inf, 0}, {9, 9, 9}, {5, 5, 5}},
                                           {{{0, 1, 2}}, {{1, 3, 4}}, {{2, 2, 2}}});
    const MeshVertexCensus vertices = meshCountVertices(mesh, sidesOf(mesh));
    EXPECT_EQ(std::tuple(vertices.nonFinite, vertices.unused, vertices.minValence, vertices.maxValence),
              std::tuple(2, 1, 2, 4));
    EXPECT_EQ(std::tuple(vertices.bounds.minX, vertices.bounds.minY, vertices.bounds.maxZ), std::tuple(1, 2, 9));
    EXPECT_NEAR(meshCountEdges(mesh, sidesOf(mesh)).longest, std::sqrt(64.0 + 49 + 36), 1e-12);
    EXPECT_EQ(meshCountDegenerateTriangles(mesh), 1);
    const CompactMesh none = withPositions({{NAN, 0, 0}, {1, 2, 3}}, {{{0, 0, 1}}});
    EXPECT_EQ(meshCountEdges(none, sidesOf(none)).longest, -1);
    // A triangle that is a single point has no edge, and encloses nothing.
    const CompactMesh point = makeMesh(1, {{{0, 0, 0}}});
    EXPECT_FALSE(meshCountEdges(point, sidesOf(point)).isClosed());
}

namespace {

/// Which corners of triangles are at one place of the surface, and the borders there, written down plainly.
struct PlainBorder
{
    std::map<Edge, std::vector<int>> edges;
    std::vector<int> fans;        ///< per corner the lowest one of its fan
    std::map<Edge, int> left;     ///< 1 for each boundary edge
    std::map<int, int> endsInFan; ///< of these edges

    explicit PlainBorder(const CompactMesh& mesh) : edges(plainEdges(mesh)), m_corners(mesh.getTrianglesRaw())
    {
        fans = spreadLabels(3 * mesh.getNumTriangles(), [&](const auto& join) {
            for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i)
                for (int j = i - i % 3; j < i; ++j)
                    if (m_corners[i] == m_corners[j]) join(i, j);
            for (const auto& edge : edges)
                for (const int a : edge.second)
                    for (const int b : edge.second)
                        for (const int endOfA : {a, cornerAtSideEnd(a)})
                            for (const int endOfB : {b, cornerAtSideEnd(b)})
                                if (m_corners[endOfA] == m_corners[endOfB]) join(endOfA, endOfB);
        });
        for (const auto& [ends, around] : edges)
            if (trianglesOf(around).size() == 1) {
                left[ends] = 1;
                ++endsInFan[fanAt(ends, ends.first)], ++endsInFan[fanAt(ends, ends.second)];
            }
    }

    int fanAt(const Edge& edge, int vertex) const
    {
        const int side = edges.at(edge).front();
        return fans[m_corners[side] == vertex ? side : cornerAtSideEnd(side)];
    }

private:
    const int* m_corners;
};

/// Takes the edges of a loop from those that are left; returns its length, vertices lying on a line.
double takeLoop(const MeshBorderLoops& loops, int loop, PlainBorder& border)
{
    const std::span<const int> vertices = loops.vertices(loop);
    const int numEdges = loops.numEdges(loop), numVertices = int(vertices.size());
    const auto edgeAt = [&](int i) { return Edge(std::minmax({vertices[i], vertices[(i + 1) % numVertices]})); };
    EXPECT_EQ(numEdges, numVertices - !loops.isClosed(loop));
    double length = 0;
    for (int i = 0; i < numEdges; ++i) {
        const Edge edge = edgeAt(i);
        EXPECT_EQ(border.left[edge]--, 1);
        length += edge.second - edge.first;
        if (i + 1 == numEdges && !loops.isClosed(loop)) break;
        const int end = vertices[(i + 1) % numVertices];
        EXPECT_EQ(border.fanAt(edge, end), border.fanAt(edgeAt((i + 1) % numEdges), end));
    }
    return length;
}

} // namespace

TEST(BorderLoops, takeEveryBoundaryEdgeOnceAndStayWithinTheirFans)
{
    znTest::Random random(2);
    for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : znTest::makeAnyMesh(random, round);
        PlainBorder border(mesh);
        MeshBorderLoops loops;
        meshBorderLoops(mesh, sidesOf(mesh), loops);
        int open = 0, odd = 0;
        for (int loop = 0; loop < loops.size(); ++loop) {
            open += !loops.isClosed(loop);
            ASSERT_EQ(loops.length(loop), takeLoop(loops, loop, border));
            ASSERT_TRUE(loop == 0 || loops.length(loop) <= loops.length(loop - 1));
        }
        for (const auto& edge : border.left) ASSERT_EQ(edge.second, 0);
        for (const auto& fan : border.endsInFan) odd += fan.second % 2;
        ASSERT_EQ(2 * open, odd) << "no more pieces than there must be";
    }
}

TEST(BorderLoops, byHand)
{
    CompactMesh mobius, sphere;
    znTest::makeMobiusBand(mobius, 12);
    znTest::makeSphere(sphere, 2);
    using Loops = std::vector<std::vector<int>>;
    const std::tuple<CompactMesh, Loops, std::vector<double>> cases[] = {
        {sphere, {}, {}},
        // Round the square as the triangles run, and round its hole the other way.
        {frame(
             {{{0, 1, 5}}, {{0, 5, 4}}, {{1, 2, 6}}, {{1, 6, 5}}, {{2, 3, 7}}, {{2, 7, 6}}, {{3, 0, 4}}, {{3, 4, 7}}}),
         {{0, 1, 2, 3}, {5, 4, 7, 6}},
         {16, 8}},
        // Two triangles that touch at a vertex, of equal size; and three on one edge, of which one leads nowhere.
        {withPositions({{0, 0, 0}, {3, 0, 0}, {0, 4, 0}, {-3, 0, 0}, {0, -4, 0}}, {{{0, 3, 4}}, {{0, 1, 2}}}),
         {{0, 1, 2}, {0, 3, 4}},
         {12, 12}},
        {withPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}},
                       {{{0, 1, 2}}, {{1, 0, 3}}, {{0, 1, 4}}}),
         {{0, 2, 1, 3}, {0, 4, 1}},
         {2 + 2 * std::sqrt(2.0), 1 + std::sqrt(2.0)}},
    };
    for (const auto& [mesh, expected, lengths] : cases) {
        MeshBorderLoops loops;
        meshBorderLoops(mesh, sidesOf(mesh), loops);
        ASSERT_EQ(loops.size(), int(expected.size()));
        for (int i = 0; i < loops.size(); ++i) {
            EXPECT_EQ(std::vector<int>(loops.vertices(i).begin(), loops.vertices(i).end()), expected[i]);
            EXPECT_NEAR(loops.length(i), lengths[i], 1e-12);
        }
    }
    MeshBorderLoops loops;
    meshBorderLoops(mobius, sidesOf(mobius), loops);
    EXPECT_EQ(loops.size(), 1);
    EXPECT_EQ(loops.numEdges(0), 24);
    EXPECT_TRUE(loops.isClosed(0));
}

TEST(PathLengths, addUpTheSidesAndTheClosingOne)
{
    const CompactMesh mesh = frame({});
    const MeshSequence paths(zn::vector<zn::vector<int>>{{0, 1, 2}, {}, {5}, {4, 5, 6, 7}});
    zn::vector<double> lengths;
    meshPathLengths(mesh, paths, false, lengths);
    EXPECT_EQ(lengths, (zn::vector<double>{8, 0, 0, 6}));
    meshPathLengths(mesh, paths, true, lengths);
    EXPECT_EQ(lengths, (zn::vector<double>{8 + std::sqrt(32.0), 0, 0, 8}));
}

TEST(TriangleComponents, equalPlainLabellingTheLargestFirst)
{
    znTest::Random random(3);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : znTest::makeAnyMesh(random, round);
        const int numTriangles = mesh.getNumTriangles();
        for (const bool overEdges : {true, false}) {
            const auto edges = plainEdges(mesh);
            const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
            const std::vector<int> labels = spreadLabels(numTriangles, [&](const auto& join) {
                for (const auto& edge : edges)
                    for (const int side : edge.second) join(edge.second.front() / 3, side / 3);
                for (int v = 0; v < mesh.getNumVertices() && !overEdges; ++v)
                    for (const int triangle : adjTris.around(v)) join(adjTris.around(v).front(), triangle);
            });
            std::map<int, int> sizeOf;
            for (const int label : labels) ++sizeOf[label];
            std::vector<std::pair<int, int>> ranked; // by size, then by lowest triangle
            for (const auto& [label, size] : sizeOf) ranked.push_back({-size, label});
            std::sort(ranked.begin(), ranked.end());

            MeshTriangleComponents components;
            if (overEdges)
                meshEdgeComponents(mesh, sidesOf(mesh), components);
            else
                meshVertexComponents(mesh, adjTris, components);
            ASSERT_EQ(components.count(), int(ranked.size()));
            for (int i = 0; i < components.count(); ++i) ASSERT_EQ(components.sizes[i], -ranked[i].first);
            ASSERT_EQ(components.ofTriangle.size(), numTriangles);
            for (int t = 0; t < numTriangles; ++t) ASSERT_EQ(ranked[components.ofTriangle[t]].second, labels[t]);
        }
    }
}

TEST(MeshVolume, countsInsideOutAsNegativeAndKeepsItsDigitsFarAway)
{
    CompactMesh cube, torus;
    znTest::makeCube(cube);
    EXPECT_EQ(meshVolume(CompactMesh()), 0);
    EXPECT_DOUBLE_EQ(meshVolume(cube), 8);
    for (int v = 0; v < 8; ++v) cube.getVertices()[v].y += 1 << 20;
    EXPECT_DOUBLE_EQ(meshVolume(cube), 8);
    for (int t = 0; t < 12; ++t) std::swap(cube.getTriangles()[t][0], cube.getTriangles()[t][1]);
    EXPECT_DOUBLE_EQ(meshVolume(cube), -8);
    znTest::makeTorus(torus, 200, 100);
    EXPECT_NEAR(meshVolume(torus), 2 * std::pow(std::numbers::pi * 0.4, 2), 0.01);
}

TEST(FoldAngle, isThatOfTheSurfaceAndNotOfSlivers)
{
    const double pi = std::numbers::pi;
    CompactMesh cube, grid;
    znTest::makeCube(cube);
    znTest::makeGrid(grid, 9, 7);
    const std::vector<std::array<float, 3>> square{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {1, 0, 0}, {1, 1, 1}};
    const std::pair<CompactMesh, double> cases[] = {
        {CompactMesh(), 0},
        {cube, pi / 2},
        {grid, 0},
        {withPositions(square, {{{0, 1, 2}}, {{0, 2, 3}}, {{1, 0, 4}}}), 0},
        {withPositions(square, {{{0, 1, 2}}, {{1, 0, 2}}}), pi},
        // The normals of triangles that are wound against each other tell nothing.
        {withPositions(square, {{{0, 1, 2}}, {{0, 3, 2}}}), 0},
    };
    for (const auto& [mesh, expected] : cases) EXPECT_NEAR(meshMaxFoldAngle(mesh, sidesOf(mesh)), expected, 1e-12);

    znTest::Random random(4);
    for (int v = 0; v < grid.getNumVertices(); ++v) grid.getVertices()[v].z = float(random.real());
    EXPECT_EQ(meshMaxFoldAngle(grid, sidesOf(grid)), meshMaxDihedralAngle(grid, znTest::adjTrisOf(grid)));
}

TEST(EdgeSides, andWhatIsMadeOfThemStayAsTheyWereAfterACancel)
{
    CompactMesh mesh, other;
    znTest::makeGrid(mesh, 200, 150);
    znTest::makeCube(other);
    const MeshEdgeSides otherSides = sidesOf(other), meshSides = sidesOf(mesh);
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    for (const double fraction : {-1.0, 0.0, 0.4, 1.0}) {
        const auto cancelled = [fraction](const auto& call) {
            znUtil::Progress progress;
            progress.setObserver([&progress, fraction](double done, const char*) {
                if (done >= fraction) progress.cancel();
            });
            if (fraction < 0) progress.cancel();
            return !call(progress);
        };
        MeshEdgeSides sides = otherSides;
        EXPECT_TRUE(cancelled([&](znUtil::Progress& progress) { return meshEdgeSides(mesh, progress, sides); }));
        EXPECT_EQ(sides.getNumEdges(), 18);
        MeshEdgeCensus edges = meshCountEdges(other, otherSides);
        EXPECT_TRUE(
            cancelled([&](znUtil::Progress& progress) { return meshCountEdges(mesh, meshSides, progress, edges); }));
        EXPECT_EQ(edges.edges, 18);
        MeshVertexCensus vertices = meshCountVertices(other, otherSides);
        EXPECT_TRUE(cancelled(
            [&](znUtil::Progress& progress) { return meshCountVertices(mesh, meshSides, progress, vertices); }));
        EXPECT_EQ(vertices.bounds.maxX, 1);
        MeshBorderLoops loops;
        EXPECT_TRUE(
            cancelled([&](znUtil::Progress& progress) { return meshBorderLoops(mesh, meshSides, progress, loops); }));
        EXPECT_EQ(loops.size(), 0);
        MeshTriangleComponents components;
        EXPECT_TRUE(cancelled(
            [&](znUtil::Progress& progress) { return meshEdgeComponents(mesh, meshSides, progress, components); }));
        EXPECT_TRUE(fraction >= 0 || cancelled([&](znUtil::Progress& progress) {
                        return meshVertexComponents(mesh, adjTris, progress, components);
                    }));
        EXPECT_EQ(components.count(), 0);
    }
}
