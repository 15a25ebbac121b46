#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/random.h"
#include "znGeom/foundation/mesh_model.h"

namespace {

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The distance to the nearest of many points of a triangle; never below the true distance.
double sampledDistance(const Point corners[3], const Point& p)
{
    constexpr int steps = 60;
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
    for (int round = 0; round < 400; ++round) {
        Point corners[3] = {random.point(), random.point(), random.point()};
        const int kind = round % 4; // ordinary, needle, needle of no area up to rounding, single point
        if (kind > 0) {
            const double lift = kind == 1 ? 1e-6 : 0;
            corners[2] = corners[0] + (corners[1] - corners[0]) * random.real(-1, 2) + random.vector() * lift;
        }
        if (kind == 3) corners[1] = corners[2] = corners[0];
        for (int i = 0; i < 5; ++i) {
            const Point p = random.point(i == 0 ? 100 : 1.5);
            MeshCoordBase coord;
            ASSERT_TRUE(coord.projectBase(corners[0], corners[1], corners[2], p));
            EXPECT_NEAR(coord.weights[0] + coord.weights[1] + coord.weights[2], 1, 1e-12);
            for (const double weight : coord.weights) EXPECT_TRUE(weight >= 0 && weight <= 1);
            const double reached = distance(coord.evaluateBase(corners), p), sampled = sampledDistance(corners, p);
            EXPECT_LT(reached, sampled + 1e-9) << kind;
            EXPECT_GT(reached, sampled - 0.05) << kind;
        }
    }
}

TEST(MeshCoord, IsNeverFartherThanTheNearestSideOfANeedle)
{
    Random random(2);
    for (int round = 0; round < 100000; ++round) {
        const double width = std::pow(10.0, -random.below(17));
        const Point a = random.point(), b = random.point();
        const auto around = [&] { return a + (b - a) * random.real(-1, 2) + random.vector() * width; };
        const Point corners[3] = {PointFlt(a), PointFlt(b), PointFlt(around())};
        const Point p = round % 2 ? around() : random.point(1.5);
        MeshCoordBase coord;
        ASSERT_TRUE(coord.projectBase(corners[0], corners[1], corners[2], p));
        double nearest = std::numeric_limits<double>::infinity();
        for (int side = 0; side < 3; ++side)
            nearest = std::min(nearest,
                               distance(ParamLine(corners[side], corners[(side + 1) % 3]).projectBounded(p, 0, 1), p));
        ASSERT_LT(distance(coord.evaluateBase(corners), p), nearest + 1e-9);
    }
}

TEST(MeshCoord, IsInvalidByDefaultAndWhereNothingCanBeSaid)
{
    const float vertices[] = {0, 0, 0, 4, 0, 0, 0, 4, 0, 8, 0, 0};
    const int triangles[] = {0, 1, 2, 0, 1, 3}; // the second one has no area
    MeshCoord coord;
    EXPECT_FALSE(coord.valid());
    EXPECT_TRUE(coord.project(0, vertices, triangles, Point(1, 1, 5)) && coord.valid());
    EXPECT_TRUE(coord.triangle == 0 && coord.weights[0] == 0.5);
    EXPECT_EQ(coord.evaluate(vertices, triangles), Point(1, 1, 0));
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
    struct Case
    {
        Point p;
        double tol;
        int corner, side; // -1 for none
    };
    const Case cases[] = {
        {{1.5, 0, 0}, 0.5, -1, 0},  {{1.5, 0, 0}, 0.501, 0, 0}, {{9, 0, 0}, 1e-9, 1, 0},  {{1, 7, 0}, 1.5, 2, 2},
        {{5, 0.5, 0}, 0.5, -1, -1}, {{5, 0.5, 0}, 0.51, -1, 0}, {{5, 4, 0}, 1e-9, -1, 1}, {{1, 4, 0}, 1e-9, -1, 2},
        {{3.5, 2.5, 0}, 100, 0, 1}, {{5, 0, 0}, 0, -1, -1},
    };
    for (const Case& c : cases) {
        MeshCoord coord;
        coord.setFromPoint(1, vertices, triangles, c.p);
        int corner = -1, side = -1;
        EXPECT_EQ(coord.onVertex(vertices, triangles, c.tol, &corner), c.corner >= 0);
        EXPECT_EQ(coord.onEdge(vertices, triangles, c.tol, &side), c.side >= 0);
        EXPECT_EQ(corner, c.corner);
        EXPECT_EQ(side, c.side);
        EXPECT_EQ(coord.onEdge(vertices, triangles, c.tol, nullptr), c.side >= 0);
        const auto* const records = reinterpret_cast<const MeshTriangle*>(triangles);
        EXPECT_EQ(coord.evaluate(reinterpret_cast<const MeshVertex*>(vertices), records), c.p);
    }
}

} // namespace
