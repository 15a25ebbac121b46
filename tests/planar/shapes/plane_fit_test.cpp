#include "znGeom/planar/shapes/plane_fit.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/random.h"

using namespace znGeom;
using namespace znLinear;

namespace {

using Points = zn::vector<Point>;

PointMesh makeMesh(const Points& points)
{
    PointMesh mesh;
    mesh.resizeVertexArray(points.size());
    for (int i = 0; i < points.size(); ++i) mesh.getVertices()[i].set(&points[i].x);
    return mesh;
}

void expectFit(const Points& points, int rank, const Vector& direction)
{
    SCOPED_TRACE(testing::Message() << direction.dx << ' ' << direction.dy << ' ' << direction.dz);
    Plane plane, ofMesh;
    EXPECT_EQ(fit(points.size(), points.data(), plane), rank);
    EXPECT_EQ(fit(makeMesh(points), ofMesh), rank);
    EXPECT_TRUE(equivalent(plane.normal, Normal(direction), 1e-12));
    EXPECT_TRUE(equivalent(ofMesh.normal, Normal(direction), 1e-5));
}

} // namespace

TEST(PlaneFit, RanksAndNormals)
{
    expectFit({{0, 0, 1}, {1, 0, 3}, {0, 1, 4}, {2, -1, 2}}, 2, {-2, -3, 1});
    expectFit({{7, 0, 0}, {7, 1, 0}, {7, 0, 2}, {7, 3, 3}}, 2, {1, 0, 0});
    expectFit({{0, 0, 0}, {1, 2, 0}, {0, 0, 5}, {1, 2, 3}}, 2, {-2, 1, 0});
    expectFit({{1, 2, 3}, {2, 2, 3}, {5, 2, 3}}, 1, {0, 1, 1});
    expectFit({{0, 0, 0}, {1, 2, 3}, {2, 4, 6}}, 1, {-5, 1, 1});
    expectFit({{5, 0, 0}, {5, 1, 2}, {5, 2, 4}}, 1, {1, -2, 1});
    expectFit({{5, 1, 0}, {5, 1, 2}}, 1, {1, 1, 0});
    expectFit({{1, 2, 3}, {1, 2, 3}, {1, 2, 3}}, 0, {0, 0, 1});
    expectFit({{0, 0, 0}, {1e-6, 0, 0}, {0, 1e-6, 0}}, 0, {0, 0, 1});
    // Points in no plane. Half the scatter matrix is (4 0 3 / 0 1 0 / 3 0 10), then (1 0 3 / 0 1 0 / 3 0 10): flat
    // enough for the slope 3/4 of least squares along z, then so steep that the third row comes first.
    for (const double more : {3.0, 0.0}) {
        Points points{{1, 0, 3}, {0, 1, 0}, {0, 0, 1}, {std::sqrt(more), 0, 0}};
        for (int i = 0; i < 4; ++i) points.append(Point(-points[i].x, -points[i].y, -points[i].z));
        expectFit(points, 2, more > 0 ? Vector(-3, 0, 4) : Vector(-10, 0, 3));
    }
    Plane plane(Point(1, 2, 3), Normal::x);
    EXPECT_EQ(fit(0, nullptr, plane) + fit(PointMesh(), plane), 0);
    EXPECT_EQ(plane.point, Point(1, 2, 3));
}

TEST(PlaneFit, RecognisesPointsInOnePlane)
{
    Plane plane(Point(1, 2, 3), Normal::x);
    const auto recognized = [&plane](const Points& points, double tolerance) {
        return recognizePlane(points, plane, tolerance);
    };
    // Heights that no slope explains: the plane is z = 0, every point a quarter away.
    const Points saddle{{1, 1, 0.25}, {-1, 1, -0.25}, {-1, -1, 0.25}, {1, -1, -0.25}};
    EXPECT_FALSE(recognized(saddle, 0.2499));
    EXPECT_FALSE(recognized({{0, 0, 0}, {1, 0, 0}}, 1));
    EXPECT_FALSE(recognized({{0, 0, 0}, {1, 0, 0}, {0, double(NAN), 0}, {5, 5, 5}}, 100));
    EXPECT_EQ(plane.point, Point(1, 2, 3)) << "unchanged so far";
    EXPECT_TRUE(recognized(saddle, 0.25)) << "the tolerance itself is allowed";
    EXPECT_TRUE(plane.normal == Normal::z && plane.point == Point::origin);
    EXPECT_TRUE(recognizePlane(makeMesh(saddle), plane, 0.25) && !recognizePlane(makeMesh(saddle), plane, 0.2));
    // The first three points are not tested.
    EXPECT_TRUE(recognized({{0, 0, 2}, {0, 0, -2}, {1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}}, 0));
    EXPECT_FALSE(recognized({{-1, 0, 0}, {0, 0, -2}, {1, 0, 0}, {0, 0, 2}, {0, 1, 0}, {0, -1, 0}}, 1.9));
    EXPECT_TRUE(recognized({{1, 2, 3}, {2, 2, 3}, {5, 2, 3}, {9, 2, 3}}, 0)) << "a line lies in a plane";
}

TEST(PlaneFit, ThroughBothEndsOfACurve)
{
    Plane plane;
    for (const Points& points : {Points{}, Points{{0, 0, 0}, {1, 0, 0}}, Points{{1, 1, 1}, {1, 5, 0}, {1, 1, 1}}}) {
        plane = Plane(Point(1, 2, 3), Normal::x);
        fitWithEndsOnPlane(points.size(), points.data(), plane);
        EXPECT_TRUE(plane.point == Point::origin && plane.normal == Normal());
    }
    znTest::Random random(2);
    for (int round = 0; round < 50; ++round) {
        Points points;
        for (int i = 3 + random.below(8); i > 0; --i) points.append(random.point(5));
        fitWithEndsOnPlane(points.size(), points.data(), plane);
        const Normal chord(points.back() - points.front());
        ASSERT_EQ(plane.point, points.front());
        ASSERT_NEAR(dot(plane.normal, chord), 0, 1e-14);
        const auto squares = [&](const Vector& normal) {
            double sum = 0;
            for (const Point& p : points) sum += std::pow(dot(normal, p - points.front()), 2);
            return sum;
        };
        for (double turn = 0; turn < 3.2; turn += 0.05)
            ASSERT_LE(squares(plane.normal.asVector()), squares(rotate(plane.normal.asVector(), chord, turn)) + 1e-9);
    }
}
