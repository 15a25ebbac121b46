#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "znGeom/foundation/linear/line.h"
#include "znGeom/planar/polylines/overlap.h"
#include "znGeom/planar/polylines/polyline_intersect.h"
#include "znGeom/planar/polylines/polyline_project.h"
#include "znGeom/planar/polylines/polyline_transform.h"

using znGeom::Polyline;
using znGeom::PolylineIntersectPt;
using znGeom::PolylineProjectPt;
using znLinear::ParamLine;
using znLinear::Point;
using znLinear::Range1d;
using znLinear::Vector;

namespace {

/// Through points, the parameter that of their number.
Polyline lineThrough(const std::vector<Point>& points)
{
    zn::vector<Polyline::vertex> vertices;
    for (const Point& point : points) vertices.append({point, static_cast<double>(vertices.size())});
    return Polyline(vertices.size(), vertices.data());
}

Polyline randomLine(znTest::Random& random, int count)
{
    std::vector<Point> points;
    for (int i = 0; i < count; ++i) points.push_back(random.point());
    return lineThrough(points);
}

constexpr int samplesPerSegment = 400;
constexpr double never = std::numeric_limits<double>::infinity();

/// The least value over places along a line.
template <typename Value>
double least(const Polyline& line, const Value& value)
{
    double best = never;
    for (int i = 0; i <= (line.getNumVertices() - 1) * samplesPerSegment; ++i)
        best = std::min(best, value(line.eval(static_cast<double>(i) / samplesPerSegment)));
    return best;
}

struct Overlap
{
    Range1d rangeA, rangeB;
    double sum = -1, maxDistance = -1, length = -1;
    bool isFound = false, reversed = false;

    Overlap(const Polyline& a, const Polyline& b, double tolerance, double endTolerance = 0, bool sameDirection = false)
    {
        isFound =
            overlap(a, b, tolerance, endTolerance, sameDirection, rangeA, rangeB, sum, maxDistance, length, reversed);
    }
};

} // namespace

TEST(PolylineProjectPt, FindsThePlaceThatSamplingFinds)
{
    znTest::Random random(1);
    for (int round = 0; round < 30; ++round) {
        const Polyline line = randomLine(random, 6);
        const Point p = random.point(2);
        Point closest;
        double distance = 0;
        const double t = PolylineProjectPt(line).project(p, closest, distance);
        const double sampled = least(line, [&](const Point& place) { return znLinear::distance(p, place); });
        EXPECT_TRUE(distance <= sampled && sampled < distance + 0.01);
        EXPECT_NEAR(znLinear::distance(p, closest), distance, 1e-12);
        EXPECT_TRUE(equivalent(line.eval(t), closest, 1e-12));
    }

    const Polyline bend = lineThrough({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 1, 0}});
    EXPECT_EQ(PolylineProjectPt(bend).project({2, -1, 0}), 1) << "the corner";
    EXPECT_EQ(PolylineProjectPt(bend).project({0.5, 0.5, 0}), 0.5) << "of three equally near";
    Point closest(7, 7, 7);
    double distance = 0;
    EXPECT_EQ(PolylineProjectPt(lineThrough({{1, 2, 3}})).project({1, 2, 3}, closest, distance), -1);
    EXPECT_EQ(PolylineProjectPt().project({1, 2, 3}), -1);
    EXPECT_EQ(closest, Point(7, 7, 7));
    EXPECT_EQ(distance, 1e150);
}

TEST(PolylineProjectPt, GivesTheBitsOfALookAtEachSegment)
{
    znTest::Random random(4);
    for (int round = 0; round < 200; ++round) {
        const double scale = std::pow(10.0, random.real(-160, 160)), away = random.oneIn(2) ? 0 : random.real(0, 1e9);
        const auto place = [&](double size) {
            return (random.vector(size).asPoint() + Vector(away, 0, 0)).asVector() * scale;
        };
        std::vector<Polyline::vertex> vertices;
        Vector at = place(1);
        for (int i = 0; i < 1 + random.below(1500); ++i) {
            at = random.oneIn(50) ? place(1) : random.oneIn(9) ? at : at + random.vector(0.01 * scale);
            vertices.push_back({at.asPoint(), double(i)});
        }
        const Polyline line(int(vertices.size()), vertices.data());
        const Point p = random.oneIn(4) ? vertices.back().point : place(random.oneIn(2) ? 1 : 5).asPoint();
        double best = 1e300, expected = -1, distance = 0;
        Point nearest, closest;
        for (std::size_t i = 0; i + 1 < vertices.size(); ++i) {
            const znLinear::ParamLine segment(vertices[i].point, vertices[i + 1].point);
            const double u = projectParam(p, segment), clamped = u < 0 ? 0 : u > 1 ? 1 : u;
            const Point candidate = u < 0 ? vertices[i].point : u > 1 ? vertices[i + 1].point : segment.eval(u);
            if (!(best > distance2(p, candidate))) continue;
            best = distance2(p, candidate), nearest = candidate, expected = double(i) + clamped;
        }
        EXPECT_EQ(PolylineProjectPt(line).project(p, closest, distance), expected);
        EXPECT_EQ(closest, nearest);
        EXPECT_EQ(distance, std::sqrt(best));
    }
}

TEST(PolylineProjectPt, MovesTheSeamToTheNearerEnd)
{
    const Polyline ring = lineThrough({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0, 0}});
    const PolylineProjectPt project(ring);
    const double cases[][5] = {// before, after, whether
                               {0, 2.5, 3, 2.5, 1}, {3, 0.5, 0, 0.5, 1},     {0.5, 3, 0.5, 0, 1}, {2.5, 0, 2.5, 3, 1},
                               {0, 1.5, 3, 1.5, 1}, {0.5, 2.5, 0.5, 2.5, 0}, {0, 3, 0, 3, 0},     {3, 3, 3, 3, 0}};
    for (const auto& [before1, before2, after1, after2, isAdjusted] : cases) {
        double t1 = before1, t2 = before2;
        EXPECT_EQ(project.adjust(t1, t2), isAdjusted != 0);
        EXPECT_TRUE(t1 == after1 && t2 == after2) << before1 << " " << before2 << ": " << t1 << " " << t2;
    }
    double t1 = 0, t2 = 1.9;
    EXPECT_FALSE(PolylineProjectPt(lineThrough({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}})).adjust(t1, t2));
    EXPECT_TRUE(t1 == 0 && t2 == 1.9);
}

TEST(PolylineIntersectPt, ComesAsNearAsSamplingDoes)
{
    znTest::Random random(2);
    for (int round = 0; round < 30; ++round) {
        const Polyline polyline = randomLine(random, 5);
        const ParamLine line(random.point(2), random.vector());
        for (const bool inFront : {false, true}) {
            double s = 0, t = 0;
            const bool isFound = PolylineIntersectPt(polyline).intersect(line, inFront, s, t);
            // Only the nearest place of each segment is asked whether it is in front.
            double sampled = never;
            for (int i = 0; i + 1 < polyline.getNumVertices(); ++i) {
                const Polyline segment(2, &polyline.getVertex(i));
                double best = never, beside = 0;
                for (int j = 0; j <= samplesPerSegment; ++j) {
                    const Point place = segment.eval(i + static_cast<double>(j) / samplesPerSegment);
                    const double away = distance(place, znLinear::Line(line));
                    if (away < best) best = away, beside = projectParam(place, line);
                }
                if (!inFront || beside > 0) sampled = std::min(sampled, best);
            }
            ASSERT_EQ(isFound, sampled < never);
            if (!isFound) continue;
            EXPECT_TRUE(!inFront || s > 0);
            EXPECT_NEAR(distance(polyline.eval(t), line.eval(s)), sampled, 0.005);
            EXPECT_NEAR(s, projectParam(polyline.eval(t), line), 1e-9);
        }
    }
}

TEST(PolylineIntersectPt, TakesTheNearestOfEqualPlacesAndWhatIsInView)
{
    const Polyline ladder = lineThrough({{-1, 5, 0}, {1, 5, 0}, {1, 2, 0}, {-1, 2, 0}, {-1, -3, 0}, {1, -3, 0}});
    const ParamLine up(Point(0, 0, 0.5), Vector(0, 2, 0));
    double s = 0, t = 0;
    PolylineIntersectPt intersect(ladder);
    ASSERT_TRUE(intersect.intersect(up, s, t));
    EXPECT_TRUE(s == 1 && t == 2.5) << "passed at a distance, and nearest the origin of the line";
    ASSERT_TRUE(intersect.intersect(ParamLine(Point(0, 4, 0), Vector(0, 1, 0)), true, s, t));
    EXPECT_TRUE(s == 1 && t == 0.5);
    const znLinear::ProjMatrix view(0.25); // w is a quarter, too: from -1 to 1 on each axis
    EXPECT_FALSE(PolylineIntersectPt(Polyline(4, &ladder.getVertex(0))).intersect(up, view, s, t));
    const Polyline near = lineThrough({{-0.5, 0.5, 0}, {0.5, 0.5, 0}});
    ASSERT_TRUE(PolylineIntersectPt(near).intersect(up, view, s, t));
    EXPECT_TRUE(s == 0.25 && t == 0.5);

    s = t = 7;
    EXPECT_FALSE(PolylineIntersectPt(lineThrough({{0, 0, 0}})).intersect(up, s, t));
    EXPECT_FALSE(PolylineIntersectPt(near).intersect(ParamLine(Point(0, 9, 0), Vector(0, 1, 0)), true, s, t));
    EXPECT_TRUE(s == 7 && t == 7);
}

TEST(PolylineIntersectPt, PassesAPlaneAtCornersToo)
{
    const Polyline line = lineThrough({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}});
    const znLinear::Plane plane({1, 0, 0}, znLinear::Normal(Vector::x));
    const znLinear::Line reference(Point(0, 3.9, 0), Vector::z);
    double t = 0;
    Point place;
    ASSERT_TRUE(PolylineIntersectPt(line).intersect(plane, t, place, nullptr));
    EXPECT_TRUE(t == 0.25 && place == Point(1, 0, 0));
    ASSERT_TRUE(PolylineIntersectPt(line).intersect(plane, t, place, &reference));
    EXPECT_TRUE(t == 2.75 && place == Point(1, 4, 0));
    t = 7;
    EXPECT_FALSE(PolylineIntersectPt(line).intersect({{9, 0, 0}, znLinear::Normal(Vector::x)}, t, place, nullptr));
    EXPECT_EQ(t, 7);

    znTest::Random random(3);
    for (int round = 0; round < 2000; ++round) {
        const Point corner = random.point(), from = random.point(), to = random.point();
        const znLinear::Plane through(corner, random.direction());
        if (through.eval(from) * through.eval(to) > -1e-3) continue;
        ASSERT_TRUE(PolylineIntersectPt(lineThrough({from, corner, to})).intersect(through, t, place, nullptr));
        ASSERT_NEAR(t, 1, 1e-9);
    }
}

TEST(PolylineTransform, KeepsParametersAndTellsTheLine)
{
    struct Told : Polyline
    {
        using Polyline::Polyline;
        void modified() override { ++count; }
        int count = 0;
    };
    const Polyline::vertex vertices[] = {{{1, 2, 3}, 5}, {{4, 5, 6}, 9}};
    Told line(2, vertices);
    znLinear::AffineMatrix matrix(2);
    matrix[3][0] = 10;
    const int before = line.count;
    polylineTransform(line, matrix);
    EXPECT_EQ(line.count, before + 1);
    EXPECT_EQ(line.getVertex(1).point, Point(18, 10, 12));
    EXPECT_EQ(line.getDomain(), Range1d(5, 9));
}

TEST(Overlap, OfALineWithItselfIsAllOfIt)
{
    znTest::Random random(4);
    for (int round = 0; round < 20; ++round) {
        const Polyline line = randomLine(random, 12);
        const Overlap all(line, line, 1e-3);
        ASSERT_TRUE(all.isFound);
        EXPECT_EQ(all.rangeA, Range1d(0, 11));
        EXPECT_EQ(all.rangeB, Range1d(0, 11));
        EXPECT_FALSE(all.reversed);
        EXPECT_LT(all.maxDistance, 1e-12);
        EXPECT_NEAR(all.sum, all.length, 1e-9);
        EXPECT_EQ(all.length, line.getLength(0, 11));

        std::vector<Point> points;
        for (int i = 11; i >= 0; --i) points.push_back(line.getVertex(i).point);
        const Polyline back = lineThrough(points);
        const Overlap reversed(line, back, 1e-3), broken(line, back, 1e-3, 0, true);
        EXPECT_TRUE(reversed.isFound && reversed.reversed && reversed.rangeB == Range1d(0, 11));
        EXPECT_TRUE(!broken.isFound || broken.length < 0.5 * reversed.length) << "in pieces of a segment";
    }
}

TEST(Overlap, TakesTheLongestStretchAndMovesItsEnds)
{
    // Along x at a height that is within 0.1 from 1 to 2, and from 3 to 8.
    const Polyline a = lineThrough({{0, 1, 0}, {1, 0.05, 0}, {2, 0.05, 0}, {2.5, 1, 0}, {3, -0.05, 0}, {8, -0.02, 0}});
    const Polyline b = lineThrough({{0, 0, 0}, {2, 0, 0}, {4, 0, 0}, {6, 0, 0}, {8.2, 0, 0}});
    const Overlap found(a, b, 0.1), snapped(a, b, 0.1, 0.3), flipped(b, a, 0.1);
    ASSERT_TRUE(found.isFound);
    EXPECT_NEAR(found.rangeA.min, 3 + (1 - 0.1) / 1.05, 1e-9);
    EXPECT_EQ(found.rangeA.max, 5);
    EXPECT_NEAR(found.rangeB.min, 0.5 * (2.5 + 0.5 * (0.9 / 1.05)), 1e-9);
    EXPECT_NEAR(found.rangeB.max, 3 + 2 / 2.2, 1e-9);
    EXPECT_NEAR(found.length, 8 - 2 * found.rangeB.min, 1e-9);
    EXPECT_NEAR(found.maxDistance, 0.1, 1e-9);
    EXPECT_EQ(snapped.rangeB.max, 4);
    EXPECT_EQ(snapped.rangeB.min, found.rangeB.min);
    EXPECT_TRUE(flipped.isFound && !flipped.reversed);

    EXPECT_FALSE(Overlap(a, lineThrough({{0, -0.2, 0}, {8, -0.2, 0}}), 0.1).isFound);
    EXPECT_FALSE(Overlap(a, lineThrough({{0, 50, 0}, {8, 50, 0}}), 0.1).isFound);
    EXPECT_FALSE(Overlap(a, lineThrough({{0, 0, 0}}), 0.1).isFound);
    EXPECT_FALSE(Overlap(lineThrough({}), b, 0.1).isFound);
}

TEST(Overlap, HoldsBesideDenseSampling)
{
    znTest::Random random(6);
    for (int round = 0; round < 60; ++round) {
        // A copy of a smooth line that leaves it in the middle of some of its way.
        std::vector<Point> points, copy;
        const double phase = random.real(0, 6), from = random.real(0.5, 3), to = from + random.real(1, 4);
        for (int i = 0; i <= 80; ++i) {
            const double x = 0.1 * i, y = std::sin(x + phase);
            points.emplace_back(x, y, 0);
            copy.emplace_back(x + 0.03, y + (x > from && x < to ? 0.01 : 0.5), 0.0);
        }
        const bool isReversed = random.oneIn(2);
        if (isReversed) std::reverse(copy.begin(), copy.end());
        const Polyline a = lineThrough(points), b = lineThrough(copy);
        const Overlap found(a, b, 0.1);
        ASSERT_TRUE(found.isFound);
        EXPECT_EQ(found.reversed, isReversed);
        const PolylineProjectPt onto(b);
        double inside = 0, sampledLength = 0;
        for (double t = 0; t < 80; t += 0.01) {
            Point closest;
            double away = 0;
            onto.project(a.eval(t), closest, away);
            const double piece = distance(a.eval(t), a.eval(t + 0.01));
            if (away < 0.1) sampledLength += piece;
            if (!found.rangeA.contains(t, 1e-9)) continue;
            EXPECT_LT(away, 0.1 + 1e-9) << t;
            inside += piece;
        }
        EXPECT_NEAR(found.sum, inside, 0.15) << "but for what is out of reach within a segment";
        EXPECT_NEAR(found.sum, sampledLength, 0.3) << "but for where the copy leaves and comes back";
        EXPECT_LT(found.maxDistance, 0.1 + 1e-9);
    }
}
