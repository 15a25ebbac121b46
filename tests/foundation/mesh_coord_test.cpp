#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "tests/support/random.h"
#include "znGeom/foundation/mesh.h"

namespace {

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The distance to the nearest of many points of a triangle; never below the true distance.
double sampledDistance(const Point corners[3], const Point& p)
{
    constexpr int steps = 40;
    double nearest = std::numeric_limits<double>::infinity();
    for (int i = 0; i <= steps; ++i)
        for (int k = 0; i + k <= steps; ++k) {
            MeshCoordBase coord;
            coord.weights[0] = double(i) / steps, coord.weights[1] = double(k) / steps;
            coord.weights[2] = 1 - coord.weights[0] - coord.weights[1];
            nearest = std::min(nearest, distance(coord.evaluateBase(corners), p));
        }
    return nearest;
}

TEST(MeshCoord, ProjectsToTheClosestPointOfATriangle)
{
    Random random(1);
    for (int round = 0; round < 20000; ++round) {
        const double width = std::pow(10.0, -random.below(17)); // from ordinary triangles to needles of no area
        const Point a = random.point(), b = round % 50 ? random.point() : a;
        const auto around = [&] { return a + (b - a) * random.real(-1, 2) + random.vector() * width; };
        const Point corners[3] = {PointFlt(a), PointFlt(b), PointFlt(around())};
        const Point p = round % 3 == 0 ? around() : random.point(round % 3 == 1 ? 1.5 : 100);
        MeshCoordBase coord;
        ASSERT_TRUE(coord.projectBase(corners[0], corners[1], corners[2], p));
        ASSERT_NEAR(coord.weights[0] + coord.weights[1] + coord.weights[2], 1, 1e-12);
        for (const double weight : coord.weights) ASSERT_TRUE(weight >= 0 && weight <= 1);
        const double reached = distance(coord.evaluateBase(corners), p);
        for (int side = 0; side < 3; ++side) {
            const ParamLine line(corners[side], corners[(side + 1) % 3]);
            ASSERT_LT(reached, distance(line.projectBounded(p, 0, 1), p) + 1e-9);
        }
        if (round % 20 == 0) { // every point of a triangle is at least as far
            ASSERT_LT(reached, sampledDistance(corners, p) + 1e-9);
        }
    }
}

TEST(MeshCoord, IsInvalidByDefaultAndWhereNothingCanBeSaid)
{
    const float vertices[] = {0, 0, 0, 4, 0, 0, 0, 4, 0, 8, 0, 0};
    const int triangles[] = {0, 1, 2, 0, 1, 3}; // the second one has no area
    MeshCoord coord;
    EXPECT_FALSE(coord.valid());
    EXPECT_TRUE(coord.project(0, vertices, triangles, Point(1, 1, 5)) && coord.valid() && coord.weights[0] == 0.5);
    EXPECT_TRUE(coord.project(1, vertices, triangles, Point(3, 2, 0)));
    EXPECT_EQ(coord.evaluate(vertices, triangles), Point(3, 0, 0));
    coord.setFromPoint(0, vertices, triangles, Point(-4, 8, 7)); // weights beyond [0, 1]
    EXPECT_TRUE(coord.weights[0] == 0 && coord.weights[1] == -1 && coord.weights[2] == 2);
    const auto expectInvalid = [&coord](auto set) {
        coord.weights[0] = 1;
        set();
        EXPECT_FALSE(coord.valid());
    };
    expectInvalid([&] { EXPECT_FALSE(coord.project(-1, vertices, triangles, Point())); });
    expectInvalid([&] { EXPECT_FALSE(coord.project(0, vertices, triangles, Point(nan, 0, 0))); });
    expectInvalid([&] { EXPECT_FALSE(coord.projectBase(Point(), Point(1, 0, 0), Point(0, nan, 0), Point())); });
    expectInvalid([&] { coord.setFromPoint(-1, vertices, triangles, Point()); });
    expectInvalid([&] { coord.setFromPoint(1, vertices, triangles, Point(3, 2, 0)); });
    expectInvalid([&] { coord.setFromPoint(0, vertices, triangles, Point(nan, 0, 0)); });
}

TEST(MeshCoord, LiesOnACornerOrASideStrictlyWithinTheTolerance)
{
    const float vertices[] = {9, 9, 9, 1, 0, 0, 9, 0, 0, 1, 8, 0};
    const int triangles[] = {0, 0, 0, 1, 2, 3};
    // A point and a tolerance: the corner and the side it lies on, -1 for none.
    const std::tuple<Point, double, int, int> cases[] = {
        {{1.5, 0, 0}, 0.5, -1, 0},  {{1.5, 0, 0}, 0.501, 0, 0}, {{9, 0, 0}, 1e-9, 1, 0},  {{1, 7, 0}, 1.5, 2, 2},
        {{5, 0.5, 0}, 0.5, -1, -1}, {{5, 0.5, 0}, 0.51, -1, 0}, {{5, 4, 0}, 1e-9, -1, 1}, {{1, 4, 0}, 1e-9, -1, 2},
        {{3.5, 2.5, 0}, 100, 0, 1}, {{5, 0, 0}, 0, -1, -1},
    };
    for (const auto& [p, tol, onCorner, onSide] : cases) {
        MeshCoord coord;
        coord.setFromPoint(1, vertices, triangles, p);
        int corner = -1, side = -1;
        EXPECT_EQ(coord.onVertex(vertices, triangles, tol, &corner), onCorner >= 0);
        EXPECT_EQ(coord.onEdge(vertices, triangles, tol, &side), onSide >= 0);
        EXPECT_TRUE(corner == onCorner && side == onSide && coord.evaluate(vertices, triangles) == p);
        EXPECT_EQ(coord.onEdge(vertices, triangles, tol, nullptr), onSide >= 0);
    }
}

} // namespace
