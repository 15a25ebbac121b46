#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"

using namespace znGeom;
using namespace znLinear;
using znTest::boxOf;

namespace {

using Polygon = std::vector<Point>;

/// The part of a convex polygon (or of two corners, or one) that lies below all planes, moved outward by `reach`.
Polygon clipped(Polygon polygon, const std::vector<Plane>& planes, double reach)
{
    for (const Plane& plane : planes) {
        Polygon rest;
        for (size_t i = 0; i < polygon.size(); ++i) {
            const Point &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
            const double above = plane.eval(a) - reach, next = plane.eval(b) - reach;
            if (above <= 0) rest.push_back(a);
            if (above * next < 0) rest.push_back(a + (b - a) * (above / (above - next)));
        }
        polygon = rest;
    }
    return polygon;
}

std::vector<Plane> facesOf(const BoundingBox& box)
{
    const Point low = box.minPt(), high = box.maxPt();
    return {{low, -Normal::x}, {low, -Normal::y}, {low, -Normal::z},
            {high, Normal::x}, {high, Normal::y}, {high, Normal::z}};
}

const BoundingBox unit = boxOf({0, 0, 0}, {1, 1, 1});

/// The unit cube, seen along z.
const Frustum cube({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}});

} // namespace

TEST(BoxPredicates, TrianglesAndSegmentsMeetBoxesAsClippingSays)
{
    znTest::Random random(1);
    int counts[2] = {};
    for (int round = 0; round < 20000; ++round) {
        const double scale = round % 2 == 0 ? 1.0 : 1000.0, margin = 1e-3 * scale;
        const BoundingBox box = boxOf(znTest::pointFlt(random, scale), znTest::pointFlt(random, scale));
        PointFlt p[3];
        for (PointFlt& corner : p) corner = znTest::pointFlt(random, (round % 3 + 0.5) * scale);
        if (round % 7 == 0) p[1] = p[0];
        if (round % 5 == 0) p[2] = p[1];
        for (const int count : {2, 3}) {
            const bool sureHit = !clipped(Polygon(p, p + count), facesOf(box), -margin).empty();
            if (!sureHit && !clipped(Polygon(p, p + count), facesOf(box), margin).empty()) continue;
            const bool meets =
                count == 2 ? intersects(box, &p[0].x, &p[1].x) : intersects(box, &p[0].x, &p[1].x, &p[2].x);
            ASSERT_EQ(meets, sureHit) << round << " of " << count;
            ++counts[sureHit];
        }
    }
    EXPECT_TRUE(counts[0] > 5000 && counts[1] > 5000);
}

TEST(BoxPredicates, TouchingCountsAndAHairBeyondDoesNot)
{
    const PointFlt cases[][4] = {
        // three corners and the direction away from the box
        {{1, 1, 1}, {2, 1, 1}, {1, 2, 2}, {1, 1, 1}},                    // corner on corner
        {{1, 0.5f, 0.5f}, {2, 0, 0}, {2, 1, 0}, {1, 0, 0}},              // corner on a face
        {{2, 0, 0.5f}, {0, 2, 0.5f}, {2, 2, 0.5f}, {1, 1, 0}},           // edge across an edge of the box
        {{-1, 1, 1}, {2, 1, 1}, {0, 2, 3}, {0, 1, 1}},                   // edge along an edge of the box
        {{0, 0, 1}, {3, 0, 1}, {0, 3, 1}, {0, 0, 1}},                    // in the plane of a face
        {{3, 0, 0}, {0, 3, 0}, {0, 0, 3}, {1, 1, 1}},                    // its interior on a corner of the box
        {{0, 0.5f, 0.5f}, {0, 0.5f, 0.5f}, {0, 0.5f, 0.5f}, {-1, 0, 0}}, // a point
        {{2, 0, 0.5f}, {0, 2, 0.5f}, {1, 1, 0.5f}, {1, 1, 0}},           // without area
    };
    for (const auto& c : cases)
        for (int turn = 0; turn < 6; ++turn) {
            PointFlt p[3];
            for (int i = 0; i < 3; ++i) p[i] = c[(turn < 3 ? turn + i : turn - i) % 3];
            EXPECT_TRUE(intersects(unit, &p[0].x, &p[1].x, &p[2].x)) << &c - cases;
            EXPECT_EQ(intersects(unit, &p[0].x, &p[1].x), !clipped({p[0], p[1]}, facesOf(unit), 0).empty());
            for (PointFlt& corner : p) corner += c[3].asVector() * 0x1p-16f;
            EXPECT_FALSE(intersects(unit, &p[0].x, &p[1].x, &p[2].x) || intersects(unit, &p[0].x, &p[1].x));
        }
    EXPECT_TRUE(intersects(unit, Sphere{{3, 0.5, 0.5}, 2}));
    EXPECT_FALSE(intersects(unit, Sphere{{3, 0.5, 0.5}, 1.9999}));
    for (const double x : {-1e-12, 0.0, 0.5, 1.0, 1 + 1e-12}) {
        EXPECT_EQ(intersects(unit, Plane({x, 5, 5}, Normal::x)), x < 0 ? 1 : x > 1 ? -1 : 0);
        EXPECT_EQ(intersects(unit, Plane({x, 5, 5}, -Normal::x)), x < 0 ? -1 : x > 1 ? 1 : 0);
    }
    const Normal slanted(-0.6, 0.8, 0); // runs from -0.6 to 0.8 over the unit box
    for (const auto& [at, side] : {std::pair(-0.61, 1), {-0.59, 0}, {0.79, 0}, {0.81, -1}})
        EXPECT_EQ(intersects(unit, Plane((slanted * at).asPoint(), slanted)), side);
}

TEST(Frustum, MeetsBoxesAndSegmentsAsPlanesAndClippingSay)
{
    constexpr int faces[6][4] = {{0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    znTest::Random random(3);
    int numBySide[2] = {}, counts[2][3] = {};
    for (int round = 0; round < 20000; ++round) {
        const Frustum frustum = znTest::randomFrustum(random, round % 4 * 0.5);
        const Point apex = combine(frustum.corners[0], frustum.corners[2]);
        const Vector view = combine(frustum.corners[4], frustum.corners[6]) - apex;
        const Line ray = frustum.getRay();
        ASSERT_TRUE(equivalent(ray.point, apex, 1e-12) && equivalent(ray.direction, view * 0.5, 1e-12));
        ASSERT_TRUE(equivalent(frustum.planes[0].normal.asVector(), view * -0.5, 1e-9)) << "of a point, too";
        for (int i = 0; i < 6; ++i) {
            ASSERT_LT(frustum.planes[i].eval(apex + view * 0.5), -0.1) << "outward";
            for (const int corner : faces[i]) ASSERT_NEAR(frustum.planes[i].eval(frustum.corners[corner]), 0, 1e-12);
        }

        const PointFlt a = znTest::pointFlt(random, 3), b = znTest::pointFlt(random, 3);
        BoundingBox around;
        bool beyondPlane = false;
        for (const Point& corner : frustum.corners) around.extend(PointFlt(corner));
        for (const Plane& plane : frustum.planes) beyondPlane |= intersects(boxOf(a, b), plane) == 1;
        const bool beyondFace = !boxOf(a, b).intersects(around);
        ASSERT_EQ(intersects(boxOf(a, b), frustum), !beyondFace && !beyondPlane) << round;
        if (beyondFace != beyondPlane) ++numBySide[beyondFace];

        const std::vector<Plane> planes(frustum.planes, frustum.planes + 6);
        const bool sureHit = !clipped({a, b}, planes, -1e-4).empty();
        if (!sureHit && !clipped({a, b}, planes, 1e-4).empty()) continue;
        const int numInside = int(contains(frustum, a)) + int(contains(frustum, b));
        PointFlt out(9, 9, 9);
        ASSERT_EQ(lineFrustumIntersect(a, b, frustum, out), sureHit) << round;
        ++counts[sureHit][numInside];
        if (sureHit && numInside == 0) {
            ASSERT_TRUE(clipped({out}, planes, -1e-5).empty() && !clipped({out}, planes, 1e-5).empty())
                << "on the hull";
            ASSERT_LT(distance(out, Line(a, b)), 1e-5);
        } else {
            ASSERT_EQ(out, sureHit ? a : PointFlt(9, 9, 9)) << "a also where only b is inside";
        }
    }
    EXPECT_TRUE(numBySide[0] > 100 && numBySide[1] > 100);
    EXPECT_TRUE(counts[0][0] > 500 && counts[1][0] > 100 && counts[1][1] > 100 && counts[1][2] > 10);
}

/// For a segment that passes through two faces, the face that comes first in the table of the hull is reported,
/// whichever way the segment runs. The far cap and the side of corners 2 and 3 are wound opposite to the others, so
/// that with back sides hidden two of the directions see nothing.
TEST(Frustum, TouchingAndARaisedCullDistanceThatHidesTheHullFromSomeSides)
{
    constexpr float none = -1, faces[2][3][2] = {{{0, 0}, {0, 0}, {0, 0}}, {{1, 0}, {none, 0}, {none, 0}}};
    for (int number = 0; number < 12; ++number) {
        const int raised = number / 6, axis = number / 2 % 3, back = number % 2;
        const znTest::CullDistance cull(raised ? 10.0 : 1e-06);
        PointFlt low(0.25f, 0.375f, 0.3125f), high = low, out(none, none, none);
        low[axis] = -1, high[axis] = 2;
        const bool hit = lineFrustumIntersect(back ? high : low, back ? low : high, cube, out);
        EXPECT_EQ(hit, faces[raised][axis][back] != none) << number;
        EXPECT_EQ(out[axis], faces[raised][axis][back]) << number;
    }
    EXPECT_FALSE(lineFrustumIntersect({2, 0.5f, 0.5f}, {2, 0.5f, 0.5f}, cube)) << "without length";
    EXPECT_TRUE(intersects(boxOf({1, 1, 1}, {2, 2, 2}), cube)) << "touching counts";
    EXPECT_FALSE(intersects(boxOf({0x1.000002p0f, 0, 0}, {2, 1, 1}), cube));
    for (const double past : {0.0, 1e-15, 9e-11, 2e-10})
        for (const Point& p : {Point(1 + past, 0.5, 0.5), Point(-past, 0.5, 0.5)})
            EXPECT_TRUE(contains(cube, p) == (past == 0) && pointFrustumIntersect(p, cube) == (past < 1e-10)) << past;
}
