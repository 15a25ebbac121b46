#include "znGeom/spatial/shapes/triangle_intersect.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "tests/support/random.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace {

using znGeom::intersect;
using znLinear::Point;
using znLinear::Vector;
using znTest::Random;

using Triangle = std::array<Point, 3>;

bool cross(const Triangle& a, const Triangle& b, Point& p, Point& q)
{
    return intersect(a[0], a[1], a[2], b[0], b[1], b[2], p, q);
}
bool cross(const Triangle& a, const Triangle& b)
{
    Point p, q;
    return cross(a, b, p, q);
}

/// Exact arithmetic on corners with small whole coordinates.
namespace exact {

using Number = long long;
struct Fraction
{
    Number above, below; ///< below > 0
    bool operator<(const Fraction& other) const { return above * other.below < other.above * below; }
};
using Vec = std::array<Number, 3>;

Vec vec(const Point& p) { return {Number(p.x), Number(p.y), Number(p.z)}; }
Vec minus(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Number dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vec cross(const Vec& a, const Vec& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
Vec normal(const Triangle& t) { return cross(minus(vec(t[1]), vec(t[0])), minus(vec(t[2]), vec(t[0]))); }
bool isZero(const Vec& v) { return v == Vec{0, 0, 0}; }

/// The part of the line common to both planes that lies in a triangle; none where the first is beyond the second.
std::pair<Fraction, Fraction> part(const Triangle& t, const Triangle& other, const Vec& line)
{
    Fraction low{1000000, 1}, high{-1000000, 1};
    const auto include = [&](const Fraction& at) { low = std::min(low, at), high = std::max(high, at); };
    Number d[3], s[3];
    for (size_t i = 0; i < 3; ++i) {
        d[i] = dot(normal(other), minus(vec(t[i]), vec(other[0])));
        s[i] = dot(vec(t[i]), line);
    }
    for (size_t i = 0; i < 3; ++i) {
        const size_t j = (i + 1) % 3;
        if (d[i] == 0) include({s[i], 1});
        if ((d[i] < 0 && d[j] > 0) || (d[i] > 0 && d[j] < 0)) {
            const Number sign = d[i] > d[j] ? 1 : -1;
            include({sign * (s[i] * (d[i] - d[j]) + (s[j] - s[i]) * d[i]), sign * (d[i] - d[j])});
        }
    }
    return {low, high};
}

/// Whether two triangles with an area have more than a point in common and lie in different planes.
bool cross(const Triangle& a, const Triangle& b)
{
    const Vec line = cross(normal(a), normal(b));
    if (isZero(line)) return false;
    const auto [lowA, highA] = part(a, b, line);
    const auto [lowB, highB] = part(b, a, line);
    return std::max(lowA, lowB) < std::min(highA, highB);
}

} // namespace exact

double distanceFrom(const Triangle& t, const Point& p)
{
    znGeom::MeshCoordBase coord;
    EXPECT_TRUE(coord.projectBase(t[0], t[1], t[2], p));
    return distance(coord.evaluateBase(t.data()), p);
}

// Few coordinates, so that corners and edges meet by chance in every way.
TEST(TriangleIntersect, DecidesAsExactArithmeticDoes)
{
    Random random(1);
    const auto corner = [&random] { return Point(random.below(5) - 2, random.below(5) - 2, random.below(5) - 2); };
    int numCrossings = 0;
    for (int i = 0; i < 40000; ++i) {
        const Triangle a{corner(), corner(), corner()}, b{corner(), corner(), corner()};
        if (exact::isZero(exact::normal(a)) || exact::isZero(exact::normal(b))) continue;
        Point p, q;
        const bool found = cross(a, b, p, q);
        ASSERT_EQ(exact::cross(a, b), found) << i;
        ASSERT_EQ(found, cross(b, a)) << i;
        if (!found) continue;
        ++numCrossings;
        ASSERT_GT(distance(p, q), 1e-6);
        for (const Triangle* t : {&a, &b}) ASSERT_LT(std::max(distanceFrom(*t, p), distanceFrom(*t, q)), 1e-12);
    }
    EXPECT_GT(numCrossings, 5000);
}

// On either side of a plane through the common corner: noise must not make a crossing of it.
TEST(TriangleIntersect, TouchingCornersAreNoCrossingHoweverTurnedAndScaled)
{
    Random random(2);
    for (int i = 0; i < 20000; ++i) {
        const double scale = std::pow(10.0, random.below(13) - 6);
        const znLinear::Normal x = random.direction();
        const Vector y = x.asVector().orthogonalVector(), z = cross(x, y);
        const Point at = random.point(10.0 * scale);
        const auto corner = [&](double side) {
            const double slender = random.oneIn(3) ? 1e-4 : 1.0;
            return at +
                   (x * (side * random.real(0.01, 1)) + y * random.real(-1, 1) + z * (slender * random.real(-1, 1))) *
                       scale;
        };
        Triangle a{at, corner(1), corner(1)}, b{at, corner(-1), corner(-1)};
        std::rotate(a.begin(), a.begin() + random.below(3), a.end());
        std::rotate(b.begin(), b.begin() + random.below(3), b.end());
        ASSERT_FALSE(cross(a, b)) << i;
    }
}

TEST(TriangleIntersect, HasAnAnswerForEveryInput)
{
    const Triangle flat{Point(0, 0, 0), Point(4, 0, 0), Point(0, 4, 0)};
    Point p(7, 7, 7), q = p;
    ASSERT_TRUE(cross({Point(1, 1, -1), Point(1, 1, 1), Point(1, 9, 0)}, flat, p, q));
    EXPECT_EQ(p, Point(1, 1, 0));
    EXPECT_EQ(q, Point(1, 3, 0));

    const double nan = std::numeric_limits<double>::quiet_NaN(), huge = 1e300;
    const Triangle misses[] = {
        {Point(1, 1, 0), Point(2, 1, 0), Point(1, 2, 0)},           // in its plane, facing alike
        {Point(1, 1, 0), Point(1, 2, 0), Point(2, 1, 0)},           // and the other way
        {Point(1, 1, 1), Point(1, 1, 1), Point(1, 1, 1)},           // a point
        {Point(1, 1, -1), Point(1, 1, 1), Point(1, 1, 0)},          // a needle through it
        {Point(nan, 0, 1), Point(1, 1, -1), Point(1, 2, 1)},        // no triangle at all
        {Point(huge, 0, 1), Point(huge, 1, -1), Point(huge, 2, 1)}, // far away
        {Point(1, 1, 1e-9), Point(2, 1, 1e-9), Point(1, 2, 1e-9)},  // above it
        {Point(0, 0, 0), Point(0, -1, 1), Point(0, -1, -1)},        // at a corner
    };
    for (const Triangle& miss : misses) {
        EXPECT_FALSE(cross(flat, miss, p, q));
        EXPECT_FALSE(cross(miss, flat, p, q));
    }
    EXPECT_EQ(p, Point(1, 1, 0)) << "was written on false";
}

/// What a case of triangle and plane gives: the result, and for both points the edge as (towards, from).
struct Met
{
    int result;
    std::array<int, 2> first, second;
};

TEST(TriangleIntersect, PlaneMeetsCornersAndEdgesInTheStatedOrder)
{
    struct Case
    {
        double z[3];
        Met met;
    };
    const Case cases[] = {
        {{1, 2, 3}, {0, {}, {}}},          {{-1, -2, -3}, {0, {}, {}}},       {{0, 0, 0}, {3, {}, {}}},
        {{0, 1, 2}, {1, {0, 0}, {}}},      {{-1, 0, -1}, {1, {1, 1}, {}}},    {{1, 1, 0}, {1, {2, 2}, {}}},
        {{0, 0, 1}, {2, {0, 0}, {1, 1}}},  {{0, -1, 0}, {2, {0, 0}, {2, 2}}}, {{3, 0, 0}, {2, {1, 1}, {2, 2}}},
        {{0, 1, -2}, {2, {0, 0}, {2, 1}}}, {{-1, 0, 2}, {2, {1, 1}, {0, 2}}}, {{1, -2, 0}, {2, {2, 2}, {1, 0}}},
        {{1, 1, -2}, {2, {2, 1}, {0, 2}}}, {{-3, 1, 1}, {2, {0, 2}, {1, 0}}}, {{1, -1, 2}, {2, {1, 0}, {2, 1}}},
    };
    const double plane[4] = {0, 0, 2, -2}; // z = 1, not of unit length
    for (const Case& c : cases) {
        const Point corners[3] = {{0, 0, 1 + c.z[0]}, {8, 0, 1 + c.z[1]}, {0, 8, 1 + c.z[2]}};
        Point a, b;
        double ta = -1, tb = -1;
        int edgeA[2] = {-1, -1}, edgeB[2] = {-1, -1};
        ASSERT_EQ(intersect(plane, corners[0], corners[1], corners[2], 1e-9, a, ta, edgeA, b, tb, edgeB), c.met.result);
        const bool hasFirst = c.met.result == 1 || c.met.result == 2, hasSecond = c.met.result == 2;
        const auto check = [&](bool has, const Point& at, double t, const int* edge,
                               const std::array<int, 2>& expected) {
            EXPECT_EQ(has, t != -1);
            if (!has) return;
            EXPECT_EQ(edge[0], expected[0]);
            EXPECT_EQ(edge[1], expected[1]);
            EXPECT_EQ(edge[0] == edge[1], t == 1);
            EXPECT_NEAR(at.z, 1, 1e-15);
            const Vector along = corners[edge[1]].asVector() * (1 - t) + corners[edge[0]].asVector() * t;
            EXPECT_EQ(at, along.asPoint());
        };
        check(hasFirst, a, ta, edgeA, c.met.first);
        check(hasSecond, b, tb, edgeB, c.met.second);
    }
}

TEST(TriangleIntersect, PlaneToleranceIsStrict)
{
    const double plane[4] = {0, 0, 1, 0};
    const Point p0(0, 0, 0.5), p1(1, 0, 1), p2(0, 1, 1);
    Point a, b;
    EXPECT_EQ(intersect(plane, p0, p1, p2, 0.5, a, b), 0);
    EXPECT_EQ(intersect(plane, p0, p1, p2, 0.75, a, b), 1);
    EXPECT_EQ(intersect(plane, p0, p1, p2, 2, a, b), 3);
}

} // namespace
