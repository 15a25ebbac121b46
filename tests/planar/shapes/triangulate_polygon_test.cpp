#include "znGeom/planar/shapes/triangulate_polygon.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/random.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

using Points = zn::vector<Point>;
using Indices = zn::vector<int>;

/// The recurrence as it is defined, span by span, with nothing left out.
class PlainTriangulation
{
public:
    PlainTriangulation(const Points& points, const BitVector* forbidden)
        : m_points(points), m_forbidden(forbidden), m_size(points.size()), m_entries(m_size * m_size)
    {
        for (int span = 2; span < m_size; ++span)
            for (int i = 0; i + span < m_size; ++i) fill(i, i + span);
    }

    void append(int i, int j, Indices& triangles)
    {
        if (j - i < 2) return;
        const int k = at(i, j).apex;
        append(i, k, triangles);
        for (const int corner : {i, k, j}) triangles.append(corner);
        append(k, j, triangles);
    }

private:
    struct Entry
    {
        double area = 0, cosine = 1;
        int apex = -1;
        Vector normal;
    };
    Entry& at(int i, int j) { return m_entries[i * m_size + j]; }

    Entry evaluate(int i, int k, int j)
    {
        for (const auto& [from, to] : {std::pair(i, k), {k, j}, {j, i}})
            if (m_forbidden && m_forbidden->isSet(from * m_size + to)) return worst(k);
        const Vector v = 0.5 * cross(m_points[i] - m_points[k], m_points[i] - m_points[j]);
        Entry entry{v.length(), -1, k, {}};
        if (epsilonTol > entry.area) return entry;
        entry.normal = Normal(v).asVector();
        entry.cosine = std::min(dot(entry.normal, at(k, j).normal), dot(entry.normal, at(i, k).normal));
        return entry;
    }
    static Entry worst(int apex) { return {std::numeric_limits<double>::max(), -1, apex, {}}; }

    void fill(int i, int j)
    {
        Entry best = worst(i + 1);
        for (int k = i + 1; k < j; ++k) {
            Entry entry = evaluate(i, k, j);
            entry.cosine = std::min({entry.cosine, at(i, k).cosine, at(k, j).cosine});
            entry.area = at(i, k).area + entry.area + at(k, j).area;
            if (entry.cosine != best.cosine ? entry.cosine > best.cosine : entry.area < best.area) best = entry;
        }
        at(i, j) = best;
    }

    const Points& m_points;
    const BitVector* m_forbidden;
    int m_size;
    zn::vector<Entry> m_entries;
};

Indices plainly(const Points& points, const BitVector* forbidden = nullptr)
{
    Indices triangles;
    PlainTriangulation(points, forbidden).append(0, points.size() - 1, triangles);
    return triangles;
}

Indices triangulated(const Points& points, BitVector* forbidden = nullptr)
{
    Indices triangles{7, 7};
    EXPECT_TRUE(triangulatePolygon(points, triangles, forbidden, nullptr));
    return triangles;
}

Point onCircle(double t) { return {std::cos(2 * M_PI * t), std::sin(2 * M_PI * t), 0}; }

/// A point at a place t, from 0 to 1, of loops of many kinds; `i` is its number.
using PointAt = std::function<Point(int i, double t, Random& random)>;
const PointAt kinds[] = {
    [](int, double t, Random&) { return onCircle(t); },
    [](int, double t, Random& random) { return onCircle(t) + random.vector(random.oneIn(2) ? 0.2 : 0.003); },
    [](int, double t, Random& random) { return (onCircle(t).asVector() * random.real(0.4, 1)).asPoint(); },
    [](int, double, Random& random) { return random.point(); },
    [](int i, double, Random& random) { return Point(i, i % 2 * 20, random.real(-0.3, 0.3)); },
    // Ties: whole numbers, all on one line, some places twice, one place.
    [](int, double t, Random&) { return Point(std::round(9 * onCircle(t).x), std::round(9 * onCircle(t).y), 0); },
    [](int, double, Random& random) { return Point(random.below(4), random.below(4), random.below(2)); },
    [](int, double, Random& random) { return Point(random.real(), 0, 0); },
    [](int, double, Random&) { return Point(1, 2, 3); },
    // Areas around the limit of flatness, below what a square can hold, beyond what numbers can hold, and none at all.
    [](int, double t, Random& random) { return (onCircle(t).asVector() * random.real(1e-5, 4e-5)).asPoint(); },
    [](int, double, Random& random) { return random.point(1e-80); },
    [](int, double, Random& random) { return random.point(1e77); },
    [](int, double, Random& random) { return random.point(random.oneIn(2) ? 1e155 : 1); },
    [](int i, double t, Random&) { return i % 7 == 3 ? Point(double(NAN), 0, double(INFINITY)) : onCircle(t); }};

Points makeLoop(const PointAt& pointAt, int size, Random& random)
{
    Points points;
    for (int i = 0; i < size; ++i) points.append(pointAt(i, double(i) / size, random));
    return points;
}

BitVector forbidAtRandom(int size, int oneIn, Random& random)
{
    BitVector forbidden(size * size);
    for (int bit = 0; bit < size * size; ++bit)
        if (random.oneIn(oneIn)) forbidden.setBit(bit);
    return forbidden;
}

} // namespace

TEST(TriangulatePolygon, GivesTheBitsOfThePlainRecurrence)
{
    Random random(4);
    for (size_t kind = 0; kind < std::size(kinds); ++kind)
        for (const int size : {3, 4, 5, 6, 9, 17, 18, 19, 20, 26, 41, 75}) {
            const Points points = makeLoop(kinds[kind], size, random);
            const Indices triangles = triangulated(points);
            ASSERT_TRUE(triangles == plainly(points)) << "kind " << kind << ", " << size << " points";
            for (const int oneIn : {2, 30, 1000}) {
                BitVector forbidden = forbidAtRandom(size, oneIn, random);
                ASSERT_TRUE(triangulated(points, &forbidden) == plainly(points, &forbidden))
                    << "kind " << kind << ", " << size << " points, one edge in " << oneIn;
            }
        }
}

TEST(TriangulatePolygon, ChoosesWhatIsSmallAndThenWhatComesFirst)
{
    EXPECT_EQ(triangulated({}).size() + triangulated({{0, 0, 0}, {1, 0, 0}}).size(), 0);
    // A square: both diagonals have the same area. Of a dart, only one lies inside. Two tall triangles that would
    // nearly cover one another: the short edge between their tips.
    const Points square{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, dart{{0, 0, 0}, {4, -3, 0}, {1, 0, 0}, {4, 3, 0}};
    EXPECT_TRUE((triangulated(square) == Indices{0, 1, 3, 1, 2, 3}));
    EXPECT_TRUE((triangulated(dart) == Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_TRUE((triangulated({{0, 0, 0}, {1, 0, 3}, {2, 0, 0}, {1, 0.5, 3}}) == Indices{0, 1, 3, 1, 2, 3}));
    Random random(1);
    Points loop = makeLoop(kinds[1], 60, random);
    const Indices before = triangulated(loop);
    for (Point& p : loop) p = (p.asVector() * 0x1p20).asPoint();
    EXPECT_TRUE(triangulated(loop) == before) << "scaling by a power of two changes no choice";
}

TEST(TriangulatePolygon, AvoidsForbiddenEdgesAsLongAsItCan)
{
    const Points square{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    BitVector forbidden(16);
    forbidden.setBit(3 * 4 + 1); // the triangle 0, 1, 3 has 1 to 3, the triangle 1, 2, 3 has 3 to 1
    EXPECT_TRUE((triangulated(square, &forbidden) == Indices{0, 1, 2, 0, 2, 3}));
    forbidden.setAllBits();
    EXPECT_TRUE((triangulated(square, &forbidden) == Indices{0, 1, 3, 1, 2, 3})) << "a fan";
    EXPECT_TRUE((triangulated({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, &forbidden) == Indices{0, 1, 2}));
}

TEST(TriangulatePolygon, ReportsAndStopsOnceInAThousandSteps)
{
    Random random(2);
    znUtil::Progress progress;
    std::vector<double> fractions;
    int cancelAt = -1;
    progress.setObserver([&](double fraction, const char*) {
        fractions.push_back(fraction);
        if (static_cast<int>(fractions.size()) == cancelAt) progress.cancel();
    });
    Indices triangles;
    // 78 points have 76000 steps, 94 have 133952.
    for (const auto& [size, total] : {std::pair(78, 76000), {94, 133952}}) {
        const Points loop = makeLoop(kinds[1], size, random);
        ASSERT_TRUE(triangulatePolygon(loop, triangles, nullptr, &progress));
        ASSERT_EQ(fractions.size(), static_cast<size_t>(total / 1000));
        for (size_t i = 0; i < fractions.size(); ++i) EXPECT_EQ(fractions[i], 1000.0 * double(i + 1) / total);
        EXPECT_TRUE(triangles == plainly(loop));
        fractions.clear();
        for (cancelAt = 1; cancelAt < total / 1000; cancelAt += total / 1000 - 2) {
            EXPECT_FALSE(triangulatePolygon(loop, triangles, nullptr, &progress));
            EXPECT_EQ(static_cast<int>(fractions.size()), cancelAt) << "no report after the cancel";
            EXPECT_TRUE(triangles.empty());
            progress.reset();
            fractions.clear();
        }
        cancelAt = -1;
    }
    // Cancelled before: 19 points have 952 steps, 20 have 1122.
    progress.cancel();
    EXPECT_TRUE(triangulatePolygon(makeLoop(kinds[1], 19, random), triangles, nullptr, &progress));
    EXPECT_EQ(triangles.size(), 3 * 17);
    EXPECT_FALSE(triangulatePolygon(makeLoop(kinds[1], 20, random), triangles, nullptr, &progress));
    EXPECT_TRUE(triangles.empty() && fractions.empty());
}
