#include "znGeom/curves/closest_on_line.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "tests/support/tangles.h"
#include "znGeom/foundation/linear/line.h"

using namespace znGeom;
using namespace znLinear;

namespace {

constexpr int across = 16, around = 48;

using Lines = zn::vector<zn::vector<int>>;

Point at(const CompactMesh& mesh, int vertex) { return mesh.getVertices()[vertex].asPoint(); }

double distanceToLines(const CompactMesh& mesh, const Lines& lines, const Point& p)
{
    double best2 = std::numeric_limits<double>::max();
    for (const auto& line : lines)
        for (int i = 0; i + 1 < line.size(); ++i) {
            const ParamLine edge(at(mesh, line[i]), at(mesh, line[i + 1]));
            best2 = std::min(best2, distance2(p, edge.projectBounded(p, 0, 1)));
        }
    return std::sqrt(best2);
}

} // namespace

/// One closed line the long way round a torus and one open line across.
TEST(ClosestOnLine, NearALineItIsTheNearestPointOfAllEdgesAndOnTheSurfaceAVertex)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, around, across);
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    Lines lines(2);
    for (int i = 0; i <= around; ++i) lines[0].append(i % around * across);
    for (int i = 0; i < 5; ++i) lines[1].append(i);
    MeshClosestPtOnLine source(mesh, adjTris, MeshSequence(lines));
    const MeshClosestPtOnLine closest(source); // shares
    znTest::Random random(1);
    for (int round = 0; round < 400; ++round) {
        // Above an edge of a line, farther away from the surface than sideways from the line.
        const auto& line = lines[random.below(2)];
        const int i = random.below(line.size() - 1);
        const double t = random.real();
        const Point foot = combine(1 - t, at(mesh, line[i]), t, at(mesh, line[i + 1]));
        const Vector outward = foot - Point(foot.x / 1.4, foot.y / 1.4, 0);
        const Point query = foot + outward * random.real(0.1, 0.4) + random.vector(0.01);
        const MeshCoord coord = closest(query);
        ASSERT_TRUE(coord.valid());
        const Point found = coord.evaluate(mesh.getVertices(), mesh.getTriangles());
        ASSERT_NEAR(distance(query, found), distanceToLines(mesh, lines, query), 1e-12);
        ASSERT_NEAR(distanceToLines(mesh, lines, found), 0.0, 1e-12) << "of the full mesh, and on a line";
    }
    for (const int vertex : lines[0]) {
        const MeshCoord coord = closest(at(mesh, vertex));
        ASSERT_TRUE(coord.onVertex(mesh.getVerticesRaw(), mesh.getTrianglesRaw(), 1e-12, nullptr));
        EXPECT_EQ(coord.evaluate(mesh.getVertices(), mesh.getTriangles()), at(mesh, vertex)) << "not a neighbour";
        EXPECT_EQ(coord.triangle, adjTris.triIndices(vertex)[0]);
    }
}

TEST(ClosestOnLine, OnTheSurfaceACornerOfTheLineAndWithoutAnEdgeInReachTheNumberOfTheCopy)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 6, 6);
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    const MeshTriangle first = mesh.getTriangles()[0], last = mesh.getTriangles()[mesh.getNumTriangles() - 1];
    const MeshClosestPtOnLine onEdge(mesh, adjTris, MeshSequence({first[1], first[2]}, zn::vector<int>{2}));
    // On an end of the line edge, that end; elsewhere on the triangle, including the corner that is off the line, the
    // last one.
    for (const auto& [place, corner] : {std::pair(at(mesh, first[1]), 1),
                                        {at(mesh, first[2]), 2},
                                        {combine(0.6, at(mesh, first[1]), 0.4, at(mesh, first[0])), 2}}) {
        const MeshCoord coord = onEdge(place);
        const Point found = coord.evaluate(mesh.getVertices(), mesh.getTriangles());
        EXPECT_EQ(found, at(mesh, first[corner])) << corner;
    }

    // The vertices of the line belong to the last triangles of the grid and are joined by no edge.
    const MeshSequence apart(zn::vector<int>{last[0], last[1], last[2]}, zn::vector<int>{1, 1, 1});
    const MeshClosestPtOnLine closest(mesh, adjTris, apart);
    const MeshCoord coord = closest({4.5, 4.5, 1.0});
    ASSERT_TRUE(coord.valid());
    EXPECT_LT(coord.triangle, mesh.getNumTriangles() / 2);
    EXPECT_FALSE(closest({std::nan(""), 0, 0}).valid());
    EXPECT_FALSE(MeshClosestPtOnLine(mesh, adjTris, MeshSequence())({0, 0, 0}).valid());
}
