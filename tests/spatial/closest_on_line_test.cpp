#include "znGeom/spatial/closest_on_line.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/foundation/linear/line.h"

using namespace znGeom;
using namespace znLinear;

namespace {

constexpr int across = 16, around = 48;

/// A torus, and on it one closed line the long way round and one open line across.
class LinesOnTorus : public testing::Test
{
protected:
    LinesOnTorus()
    {
        znTest::makeTorus(mesh, around, across);
        meshAdjTris(mesh, adjTris);
        zn::vector<int> ring, arc;
        for (int i = 0; i <= around; ++i) ring.append(nearestVertex(ringPoint(2 * M_PI * i / around)));
        for (int i = 0; i < 5; ++i) arc.append(ring[0] / across * across + (ring[0] % across + i) % across);
        sequences = {ring, arc};
        lines = MeshSequence(sequences);
    }

    static Point ringPoint(double angle) { return {1.4 * std::cos(angle), 1.4 * std::sin(angle), 0}; }

    int nearestVertex(const Point& p) const
    {
        int nearest = 0;
        for (int v = 0; v < mesh.getNumVertices(); ++v)
            if (distance2(p, at(v)) < distance2(p, at(nearest))) nearest = v;
        return nearest;
    }
    Point at(int vertex) const { return mesh.getVertices()[vertex].asPoint(); }
    Point evaluate(const MeshCoord& coord) const { return coord.evaluate(mesh.getVertices(), mesh.getTriangles()); }

    double distanceToLines(const Point& p) const
    {
        double best2 = std::numeric_limits<double>::max();
        for (const auto& line : sequences)
            for (int i = 0; i + 1 < line.size(); ++i) {
                const ParamLine edge(at(line[i]), at(line[i + 1]));
                best2 = std::min(best2, distance2(p, edge.projectBounded(p, 0, 1)));
            }
        return std::sqrt(best2);
    }

    CompactMesh mesh;
    MeshAdjTris adjTris;
    zn::vector<zn::vector<int>> sequences;
    MeshSequence lines;
};

} // namespace

TEST_F(LinesOnTorus, nearTheLineTheResultIsTheNearestPointOfAllEdges)
{
    const MeshClosestPtOnLine closest(mesh, adjTris, lines);
    znTest::Random random(1);
    for (int round = 0; round < 400; ++round) {
        // Above an edge of a line, away from the surface by more than the line is away.
        const auto& line = sequences[random.below(2)];
        const int i = random.below(line.size() - 1);
        const double t = random.real();
        const Point foot = combine(1 - t, at(line[i]), t, at(line[i + 1]));
        const Vector outward = foot - Point(foot.x / 1.4, foot.y / 1.4, 0);
        const Point query = foot + outward * random.real(0.1, 0.4) + random.vector(0.01);
        const MeshCoord coord = closest(query);
        ASSERT_TRUE(coord.valid());
        ASSERT_NEAR(distance(query, evaluate(coord)), distanceToLines(query), 1e-12);
        ASSERT_NEAR(distanceToLines(evaluate(coord)), 0.0, 1e-12) << "of the full mesh, and on a line";
    }
}

TEST_F(LinesOnTorus, onTheSurfaceTheResultIsAVertexOfTheLine)
{
    MeshClosestPtOnLine source(mesh, adjTris, lines);
    const MeshClosestPtOnLine closest(source); // shares
    for (int i = 0; i < around; ++i) {
        const int vertex = sequences[0][i];
        const MeshCoord coord = closest(at(vertex));
        const MeshTriangle& corners = mesh.getTriangles()[coord.triangle];
        const int weighted = coord.weights[0] == 1.0 ? 0 : coord.weights[1] == 1.0 ? 1 : 2;
        EXPECT_EQ(coord.weights[weighted], 1.0);
        // The last corner of the triangle stood on that lies on a line: the vertex itself or its neighbour.
        EXPECT_LT(distance(at(corners[weighted]), at(vertex)), 0.25);
        EXPECT_EQ(coord.triangle, adjTris.triIndices(corners[weighted])[0]);
        EXPECT_LT(distanceToLines(at(corners[weighted])), 1e-12);
    }
}

TEST(ClosestOnLine, aVertexOfTheLineGivesItself)
{
    // One edge of one triangle, its end last in corner order, and a triangle of no line besides.
    CompactMesh mesh;
    znTest::makeGrid(mesh, 2, 2);
    MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    const MeshTriangle& first = mesh.getTriangles()[0];
    const MeshSequence line(zn::vector<int>{first[1], first[2]}, zn::vector<int>{2});
    const MeshClosestPtOnLine closest(mesh, adjTris, line);
    const MeshCoord coord = closest(mesh.getVertices()[first[2]].asPoint());
    EXPECT_EQ(mesh.getTriangles()[coord.triangle][coord.weights[0] == 1.0   ? 0
                                                  : coord.weights[1] == 1.0 ? 1
                                                                            : 2],
              first[2]);
}

TEST(ClosestOnLine, withoutAnEdgeInReachTheNumberIsThatOfTheCopy)
{
    // The vertices of the line stand in the last triangles of the grid and are joined by no edge.
    CompactMesh mesh;
    znTest::makeGrid(mesh, 6, 6);
    MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    const MeshTriangle last = mesh.getTriangles()[mesh.getNumTriangles() - 1];
    const MeshSequence apart(zn::vector<int>{last[0], last[1], last[2]}, zn::vector<int>{1, 1, 1});
    const MeshClosestPtOnLine closest(mesh, adjTris, apart);
    const MeshCoord coord = closest({4.5, 4.5, 1.0});
    ASSERT_TRUE(coord.valid());
    EXPECT_LT(coord.triangle, mesh.getNumTriangles() / 2);

    const MeshClosestPtOnLine ofNothing(mesh, adjTris, MeshSequence());
    EXPECT_FALSE(ofNothing({0, 0, 0}).valid());
    EXPECT_FALSE(closest({std::nan(""), 0, 0}).valid());
}
