#include "znGeom/planar/shapes/convex_hull.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include "tests/planar/planar_shapes.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

using Points = zn::vector<Point2>;
using Indices = zn::vector<int>;

constexpr double inf = std::numeric_limits<double>::infinity(), notNumber = std::numeric_limits<double>::quiet_NaN();

/// The side of b as seen from p towards a, in whole numbers: coordinates are multiples of 2^-52 below 4 in magnitude.
int side(const Point2& p, const Point2& a, const Point2& b)
{
    __extension__ using Wide = __int128;
    const auto steps = [](double from, double to) {
        return static_cast<Wide>(std::llrint(std::ldexp(to, 52)) - std::llrint(std::ldexp(from, 52)));
    };
    const Wide left = steps(p.x, a.x) * steps(p.y, b.y), right = steps(p.y, a.y) * steps(p.x, b.x);
    return left > right ? 1 : left < right ? -1 : 0;
}

/// The scan around the lowest point after Graham, without any shortcut.
Indices plainHull(const Points& points)
{
    Indices order(points.size()), hull;
    std::iota(order.begin(), order.end(), 0);
    const auto comesFirst = [&points](int i, int j) {
        const Point2 &a = points[i], &b = points[j];
        return a.y != b.y ? a.y < b.y : a.x != b.x ? a.x > b.x : i < j;
    };
    std::swap(order.front(), *std::min_element(order.begin(), order.end(), comesFirst));
    const Point2 pivot = points[order.front()];
    // On a line through the pivot, what comes later by height is farther.
    std::sort(order.begin() + 1, order.end(), [&](int i, int j) {
        const bool iAtPivot = points[i] == pivot, jAtPivot = points[j] == pivot;
        if (iAtPivot || jAtPivot) return iAtPivot && (!jAtPivot || i < j);
        const int turn = side(pivot, points[i], points[j]);
        return turn != 0 ? turn > 0 : comesFirst(i, j);
    });
    hull.append(order.front());
    for (int i = 1; i < order.size(); ++i) {
        const Point2& p = points[order[i]];
        const bool isLast = i + 1 == order.size() || side(pivot, p, points[order[i + 1]]) != 0;
        if (p == pivot || !isLast) continue;
        while (hull.size() > 1 && side(p, points[hull[hull.size() - 2]], points[hull.back()]) != 1) hull.eraseBack();
        hull.append(order[i]);
    }
    return hull;
}

Indices hullOf(const Points& points)
{
    Indices hull{-1};
    const bool isHull = convexHull2d(points, hull);
    EXPECT_EQ(isHull, points.size() < 3 || hull.size() > 1);
    return hull;
}

} // namespace

TEST(ConvexHull2d, BreaksTiesByHeightThenRightThenIndex)
{
    EXPECT_EQ(hullOf({}), Indices());
    EXPECT_EQ(hullOf({{notNumber, 0}, {notNumber, 0}}), Indices({0, 1})) << "not looked at";
    EXPECT_EQ(hullOf({{0, 0}, {2, 2}, {1, 1}}), Indices({0, 1}));
    EXPECT_EQ(hullOf({{3, 3}, {3, 3}, {3, 3}}), Indices({0}));
    EXPECT_EQ(hullOf({{0.0, 0.0}, {-0.0, 0.0}, {0.0, -0.0}}), Indices({0}));
    EXPECT_EQ(hullOf({{0, 0}, {0, 1}, {1, 1}, {1, 0}}), Indices({3, 2, 1, 0}));
    EXPECT_EQ(hullOf({{0, 0}, {2, 0}, {2, 2}, {0, 2}, {1, 1}, {1, 0}, {2, 1}, {1, 2}, {0, 1}}), Indices({1, 2, 3, 0}));
    // The first in the pivot's place, the last in other places.
    EXPECT_EQ(hullOf({{1, 0}, {0, 1}, {1, 0}, {0, 1}, {0, 0}, {0, 0}}), Indices({0, 3, 5}));
    // A line of many points along each axis, each place taken three times.
    Points across, up;
    for (int i = 0; i < 9000; ++i) across.append({i % 3000 * 0.1, 7}), up.append({7, i % 3000 * 0.1});
    EXPECT_EQ(hullOf(across), Indices({2999, 6000}));
    EXPECT_EQ(hullOf(up), Indices({0, 8999}));
}

TEST(ConvexHull2d, LeavesOutWhatIsNotFinite)
{
    EXPECT_EQ(hullOf({{notNumber, -9}, {0, 0}, {inf, 1}, {1, 0}, {0, -inf}, {0, 1}, {2, notNumber}}),
              Indices({3, 5, 1}));
    EXPECT_EQ(hullOf({{notNumber, 0}, {0, 0}, {0, inf}}), Indices({1}));
    EXPECT_EQ(hullOf({{notNumber, 0}, {inf, 0}, {0, -inf}}), Indices());
    Points many, kept{{5, 5}};
    Random random(1);
    for (int i = 0; i < 5000; ++i)
        many.append({random.oneIn(9) ? notNumber : random.real(), random.oneIn(9) ? -inf : 2.0});
    for (const Point2 corner : {Point2(0, 0), Point2(1, 0), Point2(1, 3), Point2(0, 3)}) many.append(corner);
    EXPECT_EQ(hullOf(many), Indices({5001, 5002, 5003, 5000}));
    EXPECT_FALSE(convexHull2d(Points{{notNumber, 0}, {0, 0}, {0, 0}}, kept)) << "one is left";
    EXPECT_EQ(kept, Points({{5, 5}}));
}

TEST(ConvexHull2d, IsThatOfExactArithmeticOnAwkwardShapes)
{
    Random random(2);
    for (int round = 0; round < 3000; ++round) {
        const Points points = znTest::planeShape(round % znTest::numPlaneShapes, random);
        const Indices hull = hullOf(points);
        ASSERT_EQ(hull, plainHull(points)) << "round " << round;
        for (int i = 0; i < hull.size() && hull.size() > 2 && points.size() < 100; ++i) {
            const Point2 &start = points[hull[i]], &end = points[hull[(i + 1) % hull.size()]];
            ASSERT_EQ(side(start, end, points[hull[(i + 2) % hull.size()]]), 1) << "round " << round;
            for (const Point2& p : points) ASSERT_GE(side(start, end, p), 0) << "round " << round;
        }
    }
}

TEST(ConvexHull2d, IsThatOfExactArithmeticOnManyPoints)
{
    // Enough points for the passes that rule out most of them, and for the sort by height.
    Random random(3);
    for (const int shape : {0, 1, 2, 3, 4}) {
        Points points;
        while (points.size() < 40000) {
            const double x = random.real(-1, 1), y = random.real(-1, 1), radius = std::hypot(x, y);
            if (shape == 0 && radius < 1) points.append({2.5 + x, 2.5 + y});
            if (shape == 1) points.append({2.5 + x, 2.5 + 0.1 * x + 0.5 * y * y});
            if (shape == 2) points.append({2.5 + x / radius, 2.5 + y / radius});
            if (shape == 3) points.append({2.5 + x, 2.5 + 0.3 * x});
            if (shape == 4) points.append({1 + random.below(200) * 0x1p-7, 2 + random.below(2) * 1e-9});
            if (random.oneIn(3) && !points.empty()) points.append(Point2(points[random.below(points.size())]));
        }
        ASSERT_EQ(hullOf(points), plainHull(points)) << "shape " << shape;
    }
}

TEST(ConvexHull2d, IsTheSameAtAnyScale)
{
    Random random(4);
    for (int round = 0; round < 400; ++round) {
        const Points points = znTest::planeShape(round % znTest::numPlaneShapes, random);
        const Indices hull = hullOf(points);
        for (const int scale : {-1022, -600, 600, 1021}) {
            Points scaled = points;
            for (Point2& p : scaled) p.set(std::ldexp(p.x, scale), std::ldexp(p.y, scale));
            ASSERT_EQ(hullOf(scaled), hull) << "round " << round << " times 2^" << scale;
        }
    }
    // Numbers of all magnitudes in one determinant.
    const double tiny = 0x1p-1074, huge = 0x1p1023;
    EXPECT_EQ(hullOf({{-huge, -huge}, {tiny, tiny}, {huge, huge}}), Indices({0, 2}));
    EXPECT_EQ(hullOf({{-huge, -huge}, {tiny, 0}, {huge, huge}}), Indices({0, 1, 2}));
    EXPECT_EQ(hullOf({{-huge, -huge}, {0, tiny}, {huge, huge}}), Indices({0, 2, 1}));
    EXPECT_EQ(hullOf({{0, 0}, {tiny, tiny}, {2 * tiny, 2 * tiny}}), Indices({0, 2}));
}

TEST(ConvexHull2d, TakesPointsAndLines)
{
    Points points{{0, 0}, {1, 0}, {0.25, 0.25}, {0, 1}};
    EXPECT_TRUE(convexHull2d(points, points));
    EXPECT_EQ(points, Points({{1, 0}, {0, 1}, {0, 0}}));

    const Polyline::vertex inSpace[] = {{{0, 0, 5}}, {{1, 0, 6}}, {{0, 1, notNumber}}};
    const Polyline first(2, inSpace), second(1, inSpace + 2);
    const Polyline2d flat({{0, 0}, {1, 0}, {0, 1}}, {});
    const zn::vector<Point> expected{{1, 0, 0}, {0, 1, 0}, {0, 0, 0}};
    zn::vector<Point> hull;
    EXPECT_TRUE(convexHull2d(zn::vector<const Polyline*>{&first, &second}, hull));
    EXPECT_EQ(hull, expected);
    EXPECT_TRUE(convexHull2d(zn::vector<const Polyline2d*>{&flat, &flat}, hull));
    EXPECT_EQ(hull, expected);
    const Polyline2d point({{1, 1}, {1, 1}, {1, 1}}, {});
    EXPECT_FALSE(convexHull2d(zn::vector<const Polyline2d*>{&point}, hull));
    EXPECT_EQ(hull, expected);
    EXPECT_TRUE(convexHull2d(zn::vector<const Polyline2d*>(), hull));
    EXPECT_TRUE(hull.empty());
}
