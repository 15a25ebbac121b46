#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "tests/support/random.h"

namespace {

using namespace znLinear;
using znTest::Random;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

static_assert(std::is_convertible_v<PointFlt, Point> && std::is_constructible_v<PointFlt, Point>);
static_assert(std::is_convertible_v<AffineMatrixFlt, AffineMatrix> && std::is_convertible_v<Vector, Normal>);
static_assert(std::is_same_v<decltype(distance(PointFlt(), PointFlt())), float>);
static_assert(std::is_same_v<decltype(combine(1, Normal(), 1, Normal())), Vector>);

/// A difference of exactly the tolerance counts as one; a smaller one does not.
template <typename T, typename Tol>
void expectStrict(const T& a, const T& b, Tol difference)
{
    EXPECT_FALSE(equivalent(a, b, difference) || equivalent(b, a, difference));
    EXPECT_TRUE(equivalent(a, b, difference * Tol(1.001)));
}

TEST(Tolerance, ADifferenceOfExactlyTheToleranceIsADifference)
{
    for (int axis = 0; axis < 3; ++axis) {
        Point p(1, 2, 3);
        Normal n = Normal::z;
        p[axis] += 0.5, n[axis] += 0.5;
        expectStrict(p, Point(1, 2, 3), 0.5);
        expectStrict(n, Normal::z, 0.5);
        for (int row = 0; row < 4; ++row) {
            AffineMatrixFlt m;
            m[row][axis] -= 0.5f;
            expectStrict(m, AffineMatrixFlt::Identity, 0.5f);
        }
    }
    expectStrict(Point2(0, 1), Point2(0, 1.5), 0.5);
    expectStrict(Vector2(0.5, 1), Vector2(0, 1), 0.5);
    EXPECT_FALSE(equivalent(Point(nan, 0, 0), Point(nan, 0, 0), 1.0));

    const Plane floor(Point(7, 7, 1), Normal::z);
    EXPECT_TRUE(isAbove(Point(0, 0, 1.5), floor, 0.499) && !isAbove(Point(0, 0, 1.5), floor, 0.5));
    const Normal turned(Promise(), 0.5, std::sqrt(0.75), 0);
    EXPECT_TRUE(isParallel(Normal::x, turned, 0.501) && !isParallel(Normal::x, turned, 0.5));
    EXPECT_FALSE(isParallel(Normal::x, -Normal::x, parallelTol) || isParallel(Normal::x, Normal(), parallelTol));
}

TEST(Vector, NormalizesOrSaysThatItHasNoLength)
{
    const Vector without[] = {{0, 0, 0}, {-0.0, 0, 0}, {nan, 0, 0}, {1, nan, 0}, {inf, 0, 0}, {0, -inf, 1}};
    for (Vector v : without) {
        EXPECT_FALSE(Normal(v).valid || v.normalized().valid || v.normalize());
        EXPECT_EQ(Normal(v).asVector(), Vector::zero);
    }
    // Whatever the length, nothing but a unit vector is called one. Cross products of short edges have a length.
    for (int exponent = -320; exponent <= 300; ++exponent) {
        Vector v = Vector(3, -4, 12) * std::pow(10.0, exponent);
        const Normal n(v);
        EXPECT_NEAR(n.asVector().length(), n.valid ? 1 : 0, 1e-12) << exponent;
        EXPECT_EQ(v.normalize(), n.valid) << exponent;
        EXPECT_TRUE(n.valid || exponent < -150 || exponent > 150) << exponent;
    }
    for (int exponent = -44; exponent <= 37; ++exponent) {
        VectorFlt v = VectorFlt(3, -4, 12) * std::pow(10.0f, float(exponent));
        EXPECT_TRUE(!v.normalize() || std::fabs(v.length() - 1) < 1e-6f) << exponent;
    }
    Vector2 flat(3, 4), none(0, 0);
    EXPECT_TRUE(flat.normalize() && !none.normalize() && equivalent(flat, Vector2(0.6, 0.8), 1e-15));
    const Normal promised(Promise(), 0, 0, 5); // as it is
    EXPECT_TRUE(promised.valid && promised.dz == 5);
}

TEST(Vector, OrthogonalVectorCrossesWithTheSmallestAxisTheFirstOnTies)
{
    const std::pair<Vector, Vector> cases[] = {
        {{0, 2, 3}, Vector::x}, {{2, 0, 3}, Vector::y}, {{3, -2, 1}, Vector::z},    {{1, -1, 1}, Vector::x},
        {{2, 1, 1}, Vector::y}, {{1, 2, 1}, Vector::x}, {{3, 0.5, 0.25}, Vector::z}};
    for (const auto& [v, axis] : cases) EXPECT_EQ(v.orthogonalVector(), cross(v, axis));
}

AffineMatrix randomMatrix(Random& random)
{
    AffineMatrix m(0.0);
    while (std::fabs(m.det3x3()) < 0.05) m.setFrame(random.point(5), random.vector(), random.vector(), random.vector());
    return m;
}

TEST(Matrix, RowVectorsAreMultipliedFromTheLeft)
{
    AffineMatrix m(0.0);
    for (int i = 0; i < 12; ++i) m[i / 3][i % 3] = i + 1;
    EXPECT_EQ(Point(1, 10, 100) * m, Point(751, 863, 975));
    EXPECT_EQ(Vector(1, 10, 100) * m, Vector(741, 852, 963));
    EXPECT_EQ(Point(1, 1, 1) * AffineMatrix(3.0), Point(3, 3, 3));

    AffineMatrix2 frame;
    frame.setFrame(Point2(5, 6), Vector2(0, 2), Vector2(-2, 0));
    EXPECT_EQ(Point2(1, 10) * frame, Point2(-15, 8));
    EXPECT_EQ(Point2(-15, 8) * frame.inverse(), Point2(1, 10));
}

TEST(Matrix, IdentitiesHoldOnRandomMatrices)
{
    Random random(1);
    for (int i = 0; i < 500; ++i) {
        const AffineMatrix a = randomMatrix(random), b = randomMatrix(random);
        const Point p = random.point(3);
        EXPECT_TRUE(equivalent(p * (a * b), p * a * b, 1e-12));
        AffineMatrix first = a, twice = a;
        first.preMult(b);
        EXPECT_EQ(first, b * a);
        EXPECT_TRUE(twice.invert() && twice.invert() && equivalent(twice, a, 1e-11));
        EXPECT_TRUE(equivalent(p * a * a.inverse(), p, 1e-11));
        EXPECT_NEAR((a * b).det3x3(), a.det3x3() * b.det3x3(), 1e-12);

        // A normal stays at right angles to what lies in its surface.
        const Vector u = random.vector(), v = random.vector();
        bool ok = false;
        const AffineMatrix normals = a.normalMatrix(ok);
        ASSERT_TRUE(ok);
        EXPECT_NEAR(dot(cross(u, v) * normals, u * a), 0, 1e-10);
        EXPECT_EQ(normals.row(3), Vector::zero);

        ProjMatrix perspective(a), inverted;
        for (int row = 0; row < 4; ++row) perspective[row][3] += random.real(-0.3, 0.3);
        inverted = perspective;
        ASSERT_TRUE(inverted.invertFast());
        const Tuple4 t(random.real(), random.real(), random.real(), 1), back = t * perspective * inverted;
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(back[c], t[c], 1e-8);
        EXPECT_TRUE(equivalent((HPoint(p) * ProjMatrix(a)).project(), p * a, 1e-12));
    }
}

TEST(Matrix, ASingularOneIsReportedAndLeftAlone)
{
    AffineMatrix flat, unknown;
    flat.setFrame(Point(1, 2, 3), Vector(1, 2, 3), Vector(2, 4, 6), Vector(0, 0, 1));
    unknown[1][1] = nan;
    for (AffineMatrix m : {flat, unknown}) {
        bool ok = true;
        m.normalMatrix(ok);
        EXPECT_FALSE(ok || m.invert() || ProjMatrix(m).invertFast());
    }
    EXPECT_EQ(flat.inverse(), flat);
}

TEST(Matrix, RotateTakesOneDirectionToTheOtherHoweverFarApart)
{
    Random random(2);
    const double offsets[] = {0, 1e-17, 1e-16, 1e-15, 1e-12, 1e-9, 1e-5, 0.1, 1};
    for (int i = 0; i < 1000; ++i)
        for (const double offset : offsets)
            for (const double sign : {1.0, -3.0}) {
                const Normal from = random.direction();
                const Normal to(from * sign + random.vector() * offset);
                AffineMatrix m(7.0);
                m.rotate(from, to);
                ASSERT_LT((from.asVector() * m - to.asVector()).length(), 1e-9) << sign << " " << offset;
                const Vector v = random.vector(); // lengths and sense stay
                ASSERT_NEAR((v * m).length(), v.length(), 1e-12);
                ASSERT_NEAR(m.det3x3(), 1, 1e-12);
            }
    // Opposite directions: a half turn about the first one's orthogonal vector, which stays where it is.
    AffineMatrix half;
    half.rotate(-Normal::z, Normal::z);
    const Vector axis = (-Normal::z).asVector().orthogonalVector();
    EXPECT_TRUE(equivalent(axis * half, axis, 1e-15) && equivalent(Vector::z * half, -Vector::z, 1e-15));
}

TEST(Line, MeetsAnotherOnTheFirstOneWhereTheyAreNearest)
{
    Random random(4);
    for (int i = 0; i < 500; ++i) {
        const double size = std::pow(10.0, random.real(-4, 4)); // the tolerance is one of angles, not of lengths
        const Line first(random.point(size), random.point(size)), second(random.point(size), random.point(size));
        bool ok = false;
        const Point meeting = intersect(first, second, ok, perpendicular2Tol);
        ASSERT_TRUE(ok);
        EXPECT_LT(distance(meeting, first), 1e-9 * size);
        EXPECT_NEAR(dot(meeting - project(meeting, second), first.direction), 0, 1e-9 * size);
        const Line beside(second.point, first.direction * -2);
        EXPECT_EQ(intersect(first, beside, ok, perpendicular2Tol), first.point);
        EXPECT_FALSE(ok);
    }
    const Line none(Point(1, 2, 3), Vector()), x(Point(), Vector::x);
    bool ok[2] = {true, true};
    intersect(x, none, ok[0], perpendicular2Tol), intersect(none, x, ok[1], perpendicular2Tol);
    EXPECT_FALSE(ok[0] || ok[1]);
}

TEST(Range, OverlapsTouchesAndMisses)
{
    // Two ranges and a tolerance: whether they meet, the size of what is common, the gap.
    const std::tuple<Range1d, Range1d, double, bool, double, double> cases[] = {
        {{0, 2}, {1, 3}, 0, true, 1, 0},       {{0, 1}, {1, 2}, 0, true, 0, 0}, {{0, 1}, {1.5, 2}, 0.5, false, 0, 0.5},
        {{0, 1}, {1.5, 2}, 0.6, true, 0, 0.5}, {{}, {0, 1}, 9, false, 0, inf},  {{-inf, inf}, {3, 1}, 0, true, 2, 0}};
    for (const auto& [first, second, tol, meets, size, gap] : cases)
        for (const auto& [a, b] : {std::pair(first, second), std::pair(second, first)}) {
            EXPECT_EQ(a.intersects(b, tol), meets);
            EXPECT_EQ(intersect(a, b, tol).size(), size);
            EXPECT_EQ(distance(a, b), gap);
        }
    EXPECT_TRUE(Range1d(0, 1).contains(1, 0) && !Range1d(0, 1).contains(1.5, 0.5) && !Range1d().contains(0, 1e300));
    Range1d grown;
    for (const double value : {4.0, nan, -1.0, 2.0}) grown.include(value);
    EXPECT_EQ(grown, Range1d(-1, 4));

    const Range3d box(Point(1, 2, 3), Point(-1, 0, 5));
    EXPECT_EQ(box.mid(), Point(0, 1, 4));
    Range2d square = Range2d::unitSquare;
    square.include(Range2d(Point2(3, 0.5), Point2(2, 0.6)));
    EXPECT_EQ(square, Range2d(Point2(3, 1), Point2(0, 0)));
    EXPECT_TRUE(square.area() == 3 && Range2d().area() == 0 && square.mid() == Point2(1.5, 0.5));
    const auto expectApart = [](const auto& range, int axis) { // apart along one axis is apart
        auto beside = range;
        EXPECT_TRUE(beside.intersects(range, 0) && beside.contains(range.mid(), 0));
        beside[axis].set(50, 60);
        EXPECT_FALSE(beside.intersects(range, 1) || beside.contains(range.mid(), 1));
    };
    for (int axis = 0; axis < 3; ++axis) expectApart(box, axis);
    for (int axis = 0; axis < 2; ++axis) expectApart(square, axis);
}

TEST(Cylinder, IsHitTwiceOnceOrNever)
{
    Random random(6);
    int hitTwice = 0;
    for (int i = 0; i < 1000; ++i) {
        const Line axis(random.point(), random.point());
        const ParamLine line(random.point(2), random.point(2));
        const double radius = random.real(0.1, 1);
        bool ok = false;
        const bool near = distance(intersect(Line(line), axis, ok, 0), axis) < radius;
        double t[2] = {};
        ASSERT_EQ(intersectCylinder(line, axis, radius, t), near ? 2 : 0);
        hitTwice += near;
        if (!near) continue;
        EXPECT_LT(t[0], t[1]);
        for (const double hit : t) EXPECT_NEAR(distance(line.eval(hit), axis), radius, 1e-8);
        // A line along the axis, even if rounding makes it look slightly askew, meets nothing.
        const ParamLine along(random.point(), axis.direction * random.real(0.3, 3));
        ASSERT_EQ(intersectCylinder(along, axis, radius, t), 0);
    }
    EXPECT_GT(hitTwice, 100);
    double t[2] = {};
    const Line z(Point(), Vector::z);
    EXPECT_TRUE(intersectCylinder(ParamLine(Point(-5, 1, 7), Vector(2, 0, 1)), z, 1, t) == 1 && t[0] == 2.5);
    EXPECT_EQ(intersectCylinder(ParamLine(Point(0.5, 0, 0), Vector()), z, 1, t), 0);
    EXPECT_EQ(intersectCylinder(ParamLine(Point(nan, 0, 0), Vector::x), z, 1, t), 0);
}

double orientation(const Point2& a, const Point2& b, const Point2& c) { return cross(b - a, c - a); }

bool within(const Point2& a, const Point2& b, const Point2& p)
{
    return orientation(a, b, p) == 0 && Range2d(a, b).contains(p, 0);
}

TEST(Segments, MeetAsExactArithmeticSays)
{
    Random random(7);
    int kinds[2][2] = {};
    for (int i = 0; i < 40000; ++i) {
        Point2 p[4];
        for (Point2& corner : p) corner.set(random.below(4), random.below(4));
        const double o[4] = {orientation(p[0], p[1], p[2]), orientation(p[0], p[1], p[3]),
                             orientation(p[2], p[3], p[0]), orientation(p[2], p[3], p[1])};
        const bool crossing = o[0] * o[1] < 0 && o[2] * o[3] < 0, along = cross(p[1] - p[0], p[3] - p[2]) == 0;
        const bool expected = crossing || within(p[0], p[1], p[2]) || within(p[0], p[1], p[3]) ||
                              within(p[2], p[3], p[0]) || within(p[2], p[3], p[1]);
        ++kinds[expected][along];
        if (i % 2 && !along) { // turned, so that rounding moves the ends that touch
            AffineMatrix2 turned;
            turned.setFrame(Point2(0.1, 0.7), Vector2(std::cos(i), std::sin(i)), Vector2(-std::sin(i), std::cos(i)));
            for (Point2& corner : p) corner = corner * turned;
        }
        double t = -1, ray = -1, segment = -1;
        Point2 meeting(-9, -9);
        bool parallel = !along;
        ASSERT_EQ(doLineSegmentsIntersect(p[0], p[1], p[2], p[3], t, meeting, parallel, perpendicular2Tol), expected);
        ASSERT_EQ(parallel, along);
        if (!expected) {
            ASSERT_TRUE(t == -1 && meeting == Point2(-9, -9));
            continue;
        }
        const Vector2 first = p[1] - p[0], second = p[3] - p[2];
        ASSERT_TRUE(t >= 0 && t <= 1 && equivalent(meeting, p[0] + first * t, 1e-12));
        if (along && p[0] != p[1]) { // no point of the second segment comes earlier on the first
            const double earliest = std::min(dot(p[2] - p[0], first), dot(p[3] - p[0], first)) / first.length2();
            ASSERT_NEAR(t, std::max(0.0, earliest), 1e-12);
        }

        // The ray from the first point through the second meets the second segment there at the latest.
        ASSERT_TRUE(doesRayIntersectLineSegment(p[0], first, p[2], p[3], ray, segment, parallel, perpendicular2Tol));
        ASSERT_NEAR(ray, t, 1e-12);
        ASSERT_TRUE(segment >= 0 && segment <= 1 && equivalent(p[2] + second * segment, meeting, 1e-12));
    }
    for (const auto& [crossingKind, parallelKind] : kinds) EXPECT_TRUE(crossingKind > 1000 && parallelKind > 1000);
}

TEST(Rays, MeetSegmentsInFrontOfThem)
{
    const Point2 a(4, 0), b(6, 0), below(4, -1), above(4, 3);
    const auto meets = [](Point2 origin, Vector2 along, Point2 from, Point2 to, double rayParam, double segmentParam) {
        double ray = -1, segment = -1;
        bool parallel = false;
        const bool met =
            doesRayIntersectLineSegment(origin, along, from, to, ray, segment, parallel, perpendicular2Tol);
        EXPECT_TRUE(met || (ray == -1 && segment == -1));
        return met && ray == rayParam && segment == segmentParam;
    };
    EXPECT_TRUE(meets({0, 0}, {2, 0}, below, above, 2, 0.25));
    EXPECT_FALSE(meets({5, 0}, {2, 0}, below, above, -0.5, 0.25));
    EXPECT_FALSE(meets({nan, 0}, {1, 0}, below, above, 0, 0));
    EXPECT_TRUE(meets({0, 0}, {1, 0}, a, b, 4, 0) && meets({0, 0}, {1, 0}, b, a, 4, 1)); // along the segment
    EXPECT_TRUE(meets({5, 0}, {1, 0}, a, b, 0, 0.5) && !meets({7, 0}, {1, 0}, a, b, 0, 0));
    EXPECT_TRUE(meets({5, 0}, {0, 0}, a, b, 0, 0.5) && !meets({5, 1}, {0, 0}, a, b, 0, 0)); // no length: a point
}

} // namespace
