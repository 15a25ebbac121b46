#include "znGeom/planar/shapes/min_area_bound.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "tests/planar/planar_shapes.h"
#include "znGeom/planar/shapes/convex_hull.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

using Points = zn::vector<Point2>;

constexpr float largestRatio = std::numeric_limits<float>::max();
constexpr double notNumber = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

struct Bound
{
    Rect2 rect{{7, 7}, {7, 7}, {7, 7}, {7, 7}};
    float ratio = 7;
};

Bound boundOf(const Points& points, double margin)
{
    const Polyline2d line(points, {});
    Bound bound;
    minAreaBound(zn::vector<const Polyline2d*>{&line}, margin, bound.rect, bound.ratio);
    return bound;
}

/// Compares the four corners in their order.
void expectCorners(const Rect2& rect, const Points& expected)
{
    const Point2 corners[] = {rect.c0, rect.c1, rect.c2, rect.c3};
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(equivalent(corners[i], expected[i], 1e-12))
            << "c" << i << " is at " << corners[i].x << " " << corners[i].y;
}

/// The smallest area of rectangles along all directions from one hull vertex to the next.
double smallestArea(const Points& hull)
{
    double smallest = hull.size() > 2 ? std::numeric_limits<double>::max() : 0;
    for (int i = 0; i < hull.size() && hull.size() > 2; ++i) {
        const Vector2 edge = hull[(i + 1) % hull.size()] - hull[i];
        Range1d along, across;
        for (const Point2& p : hull) {
            along.include(dot(p - hull[i], edge) / edge.length());
            across.include(cross(edge, p - hull[i]) / edge.length());
        }
        smallest = std::min(smallest, along.size() * across.size());
    }
    return smallest;
}

double area(const Rect2& rect) { return cross(rect.c1 - rect.c0, rect.c2 - rect.c0); }

} // namespace

TEST(MinAreaRect2d, IsAsSmallAsAnyAlongTheHullAndHoldsAllPoints)
{
    Random random(1);
    for (int round = 0; round < 2000; ++round) {
        Points points = znTest::planeShape(round % znTest::numPlaneShapes, random), hull;
        if (!convexHull2d(points, hull)) continue;
        Rect2 rect;
        float ratio = 0;
        ASSERT_TRUE(minAreaRect2d(points, rect, &ratio));
        double diameter = 0;
        for (const Point2& p : hull) diameter = std::max(diameter, 2 * distance(p, hull.front()));
        // Corners are rounded like coordinates, which are up to 4.
        const double rounding = 1e-12 * diameter + 4e-15;
        ASSERT_LE(area(rect), smallestArea(hull) + rounding * diameter) << "round " << round;
        ASSERT_FALSE(ratio < 1) << "round " << round;
        const Point2 corners[] = {rect.c0, rect.c1, rect.c3, rect.c2};
        for (int i = 0; i < 4; ++i) {
            const Vector2 side = corners[(i + 1) % 4] - corners[i];
            if (side.length() < 1e-3 * diameter) continue; // its direction is nothing but rounding
            for (const Point2& p : points)
                ASSERT_GE(cross(side, p - corners[i]) / side.length(), -rounding) << "round " << round;
        }
        znTest::shuffle(points, random);
        Rect2 shuffled;
        minAreaRect2d(points, shuffled);
        ASSERT_EQ(std::memcmp(&shuffled, &rect, sizeof rect), 0) << "round " << round;
        for (Point2& p : points) p.set(p.y, -p.x);
        minAreaRect2d(points, shuffled);
        ASSERT_NEAR(area(shuffled), area(rect), rounding * diameter) << "round " << round;
        for (Point2& p : points) p.set(-p.x, p.y);
        minAreaRect2d(points, shuffled);
        ASSERT_NEAR(area(shuffled), area(rect), rounding * diameter) << "round " << round;
    }
}

TEST(MinAreaRect2d, LeavesASquareAsItIs)
{
    Rect2 rect;
    float ratio = 0;
    EXPECT_TRUE(minAreaRect2d({{1, 0}, {0, 1}, {-1, 0}, {0, -1}, {0, 0}}, rect, &ratio));
    // From the lowest corner the base leads to the right; from the leftmost it leads down.
    expectCorners(rect, {{0, -1}, {1, 0}, {-1, 0}, {0, 1}});
    EXPECT_NEAR(ratio, 1, 1e-6);
    EXPECT_TRUE(minAreaRect2d({{2, 3}, {notNumber, 0}, {2, 3}}, rect, &ratio));
    expectCorners(rect, {{2, 3}, {2, 3}, {2, 3}, {2, 3}});
    EXPECT_EQ(ratio, 1);
    EXPECT_FALSE(minAreaRect2d({{notNumber, 0}, {infinity, 0}}, rect, &ratio));
    expectCorners(rect, {{2, 3}, {2, 3}, {2, 3}, {2, 3}});
    EXPECT_EQ(ratio, 0);
}

TEST(MinAreaBound, GrowsSquaresAndAddsTheMarginAlongTheSides)
{
    // A closed outline, turned by the angle of 3, 4, 5 and by none.
    const Points flat{{0, 0}, {2, 0}, {2, 1}, {0, 1}, {0, 0}}, turned{{0, 0}, {8, 6}, {5, 10}, {-3, 4}, {0, 0}};
    expectCorners(boundOf(flat, 0.5).rect, {{-0.5, -0.5}, {2.5, -0.5}, {-0.5, 1.5}, {2.5, 1.5}});
    EXPECT_EQ(boundOf(flat, 0.5).ratio, 1);
    expectCorners(boundOf(flat, -0.25).rect, {{0.25, 0.25}, {1.75, 0.25}, {0.25, 0.75}, {1.75, 0.75}});
    expectCorners(boundOf(turned, 0).rect, {{0, 0}, {8, 6}, {-3, 4}, {5, 10}});
    expectCorners(boundOf(turned, 5).rect, {{-1, -7}, {15, 5}, {-10, 5}, {6, 17}});

    const Points square{{0, 0}, {2, 0}, {2, 2}, {0, 2}}, diamond{{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    expectCorners(boundOf(square, 0).rect, {{-1, -1}, {3, -1}, {-1, 3}, {3, 3}});
    const double half = std::sqrt(0.5);
    expectCorners(boundOf(diamond, 0).rect,
                  {{-half, -1 - half}, {1 + half, -half}, {-1 - half, half}, {half, 1 + half}});
    // Not quite a square, and less than that.
    expectCorners(boundOf({{0, 0}, {2, 0}, {2, 2.00001}, {0, 2.00001}}, 0).rect,
                  {{0, 0}, {2, 0}, {0, 2.00001}, {2, 2.00001}});
    EXPECT_NEAR(boundOf({{0, 0}, {2, 0}, {2, 2 + 1e-7}, {0, 2 + 1e-7}}, 0).rect.c3.y, 3, 1e-6);

    // A triangle has three choices: its areas along the sides are 12, 12 and 12; flatter at the top, along the base.
    EXPECT_EQ(boundOf({{0, 0}, {4, 0}, {0, 3}}, 0).ratio, 1);
    EXPECT_NEAR(boundOf({{0, 0}, {4, 0}, {2, 1}}, 0).ratio, 1.6f, 1e-6) << "4 along the base, 6.4 along the others";
}

TEST(MinAreaBound, HasRulesForSmallHulls)
{
    // Which end of a segment is the base depends on the height of the second beside the abscissa of the first.
    const Bound segment = boundOf({{0, 0}, {3, 4}}, 5), reversed = boundOf({{3, 4}, {0, 0}}, 0);
    EXPECT_EQ(segment.ratio, largestRatio);
    expectCorners(segment.rect, {{1, -7}, {10, 5}, {-7, -1}, {2, 11}});
    expectCorners(reversed.rect, {{0, 0}, {3, 4}, {0, 0}, {3, 4}});
    expectCorners(boundOf({{5, 0}, {6, 4}}, 0).rect, {{6, 4}, {5, 0}, {6, 4}, {5, 0}});
    expectCorners(boundOf({{0, 0}, {6, 8}, {3, 4}}, 0).rect, {{0, 0}, {6, 8}, {0, 0}, {6, 8}});

    const Bound point = boundOf({{2, 3}}, 0.5), twice = boundOf({{2, 3}, {2, 3}}, 0), none = boundOf({}, 1),
                thrice = boundOf({{2, 3}, {2, 3}, {2, 3}}, 1);
    EXPECT_EQ(point.ratio, 1);
    expectCorners(point.rect, {{1.5, 2.5}, {2.5, 2.5}, {1.5, 3.5}, {2.5, 3.5}});
    EXPECT_EQ(twice.ratio, largestRatio);
    for (const Bound& bound : {none, thrice}) {
        EXPECT_EQ(bound.ratio, 0);
        expectCorners(bound.rect, {{7, 7}, {7, 7}, {7, 7}, {7, 7}});
    }

    const Polyline::vertex vertices[] = {{{0, 0, 9}}, {{2, 0, 1}}, {{2, 1, -4}}, {{0, 1, 0}}};
    const Polyline first(2, vertices), second(2, vertices + 2);
    Bound bound;
    minAreaBound(zn::vector<const Polyline*>{&first, &second}, 0, bound.rect, bound.ratio);
    expectCorners(bound.rect, {{0, 0}, {2, 0}, {0, 1}, {2, 1}});
}
