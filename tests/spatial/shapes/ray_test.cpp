#include "znGeom/spatial/shapes/ray.h"

#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"

using namespace znGeom;
using namespace znLinear;
using znTest::CullDistance;
using znTest::gridPoint;

namespace {

using Corners = std::array<PointFlt, 3>;

struct Hit
{
    Hit(bool frontOnly, const Vector& direction, const PointFlt& origin, const Corners& p)
        : hit(frontOnly ? intersectRayTriangleCull(&direction.dx, &origin.x, &p[0].x, &p[1].x, &p[2].x, t, u, v)
                        : intersectRayTriangle(&direction.dx, &origin.x, &p[0].x, &p[1].x, &p[2].x, t, u, v))
    {}

    double t = 77, u = 77, v = 77;
    bool hit;
};

/// With legs of length 1; its front is seen when looking down.
constexpr Corners plain = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}};

} // namespace

TEST(RayTriangle, AgreesWithPlaneAndAreas)
{
    znTest::Random random(1);
    int counts[2] = {};
    for (int round = 0; round < 50000; ++round) {
        const double cullDistance = round % 2 == 0 ? 1e-06 : 0.5;
        const CullDistance cull(cullDistance);
        const Corners p = {znTest::pointFlt(random), znTest::pointFlt(random), znTest::pointFlt(random)};
        const PointFlt origin = znTest::pointFlt(random);
        const Vector direction = random.vector(3), normal = cross(Vector(p[1] - p[0]), Vector(p[2] - p[0]));
        const double facing = -dot(normal, direction), t = dot(normal, Vector(origin - p[0])) / facing;
        const Point at = Point(origin) + direction * t;
        double weight[3];
        for (size_t i = 0; i < 3; ++i) {
            const Point a = p[(i + 1) % 3], b = p[(i + 2) % 3];
            weight[i] = dot(normal, cross(b - a, at - a)) / normal.length2();
        }
        const double lowest = *std::min_element(weight, weight + 3), near = 1e-4 * (1 + std::fabs(t));
        if (std::fabs(facing) < 0.01 || std::fabs(lowest) < 1e-3 || std::fabs(t - cullDistance) < 1e-3) continue;
        const bool through = lowest > 0;
        const Hit both(false, direction, origin, p), front(true, direction, origin, p);
        ASSERT_EQ(both.hit, through && (facing > 0 || t > cullDistance)) << round;
        ASSERT_EQ(front.hit, through && facing > 0) << round;
        ASSERT_EQ(intersectRayTriangle(direction, origin, p[0], p[1], p[2]), both.hit && t > 0) << round;
        ASSERT_NEAR(both.t, through ? t : 77, near);
        ASSERT_NEAR(both.u, through ? weight[1] : 77, near);
        ASSERT_NEAR(both.v, through ? weight[2] : 77, near);
        ASSERT_NEAR(front.t, front.hit ? t : 77, near);
        ++counts[through];
    }
    EXPECT_TRUE(counts[0] > 5000 && counts[1] > 1000);
}

TEST(RayTriangle, FrontsCountEverywhereBacksFromTheCullDistanceOnAndNeitherBelowTheDeterminant)
{
    const double cases[][5] = {
        // cull distance, height of the origin, z of the direction, whether it is a hit, t
        {1e-6, 5, -1, 1, 5},   {1e-6, 5, -2, 1, 2.5},
        {1e-6, -1, -1, 1, -1}, {1e-6, 0, -1, 1, 0},
        {1e-6, -5, 1, 1, 5},   {1e-6, 5, 1, 0, -5},
        {1e-6, 0, 1, 0, 0},    {10, -5, 1, 0, 5},
        {10, 5, -1, 1, 5},     {5, -5, 1, 1, 5},
        {-10, 5, 1, 1, -5},    {10, -5, 0.5, 1, 10},
        {1e-6, 5, 0, 0, 77},   {1e-6, 5, double(NAN), 0, 77},
    };
    for (const auto& [cullDistance, height, along, isHit, t] : cases) {
        const CullDistance cull(cullDistance);
        const PointFlt origin(0.25f, 0.5f, float(height));
        const Hit result(false, {0, 0, along}, origin, plain);
        EXPECT_TRUE(result.hit == (isHit == 1) && result.t == t) << &cullDistance - cases[0] << " t is set on rejects";
        EXPECT_EQ(Hit(true, {0, 0, along}, origin, plain).hit, along < 0);
    }
    EXPECT_FALSE(intersectRayTriangle({0, 0, -1}, {0, 0, 0}, plain[0], plain[1], plain[2])) << "not at the origin";
    for (const auto& [x, y] : {std::pair(0.0f, 0.0f), {1, 0}, {0, 1}, {0.5f, 0}, {0, 0.25f}, {0.25f, 0.75f}})
        for (const double along : {-1.0, 1.0})
            EXPECT_TRUE(Hit(false, {0, 0, along}, {x, y, float(-along)}, plain).hit)
                << "edges and corners belong to it";
    const Corners tiny = {{{0, 0, 0}, {0x1p-10f, 0, 0}, {0, 0x1p-10f, 0}}}; // twice its area is below 1e-6
    for (const bool frontOnly : {false, true}) {
        EXPECT_FALSE(Hit(frontOnly, {0, 0, -1}, {0x1p-12f, 0x1p-12f, 1}, tiny).hit);
        EXPECT_TRUE(Hit(frontOnly, {0, 0, -2}, {0x1p-12f, 0x1p-12f, 1}, tiny).hit);
    }
}

/// Small numbers and powers of two: exact. Components of zero and rays in the planes of faces are frequent; such a face
/// bounds nothing.
TEST(Ray, MeetsBoxesWithinAnInterval)
{
    znTest::Random random(3);
    constexpr double steps[] = {-2, -1, -0.5, -0.0, 0, 0, 0.5, 1, 4};
    int counts[2] = {};
    for (int round = 0; round < 100000; ++round) {
        const BoundingBox box = znTest::boxOf(gridPoint(random, 1), gridPoint(random, 1));
        const PointFlt origin = gridPoint(random, 1);
        const Vector direction(steps[random.below(9)], steps[random.below(9)], steps[random.below(9)]);
        if (direction == Vector()) continue;
        const float from = round % 2 == 0 ? 0.0f : float(random.below(9) - 4);
        const float to = round % 4 < 2 ? BoundingBox::largest : from + float(random.below(6));
        double first = -1e9, last = 1e9;
        for (int axis = 0; axis < 3; ++axis) {
            const double step = direction[axis];
            const double low = double(box.minPt()[axis] - origin[axis]),
                         high = double(box.maxPt()[axis] - origin[axis]);
            const auto [near, far] = step == 0 ? std::pair(low > 0 ? 1e9 : -1e9, high < 0 ? -1e9 : 1e9)
                                               : std::minmax({low / step, high / step});
            first = std::max(first, near), last = std::min(last, far);
        }
        const bool expected = first <= last && first < double(to) && last > double(from);
        ASSERT_EQ(Ray(origin, direction).intersects(box, from, to), expected) << round;
        ++counts[expected];
    }
    EXPECT_TRUE(counts[0] > 5000 && counts[1] > 5000);
    EXPECT_EQ(Ray({1, 2, 3}, {2, -3, -0.0}).inverseDirection, VectorFlt(0.5f, float(-1.0 / 3.0), -INFINITY));
}

TEST(Ray, KeepsTheNearestTriangleItMet)
{
    const float close = epsilonTolFlt;
    const MeshVertex vertices[] = {{0, 0, 3}, {1, 0, 3},     {0, 1, 3},     {0, 0, 1},    {2, 0, 1},
                                   {0, 2, 1}, {0, 0, close}, {1, 0, close}, {0, 1, close}};
    const Ray ray({0.25f, 0.5f, 0}, {0, 0, 1});
    // A triangle's first vertex, and what the ray keeps afterwards.
    const std::array<double, 3> casts[] = {{6, 3.4028234663852886e38, 0}, {0, 3, 0.25}, {3, 1, 0.125}, {0, 1, 0.125}};
    for (const auto& [number, t, u] : casts) {
        const int first = int(number);
        EXPECT_EQ(ray.intersects(MeshTriangle{{first, first + 1, first + 2}}, vertices), first != 6);
        EXPECT_TRUE(ray.triParam == t && ray.baryU == u && ray.baryV == 2 * u) << first;
    }
}
