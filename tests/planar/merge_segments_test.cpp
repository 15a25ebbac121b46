#include "znGeom/planar/merge_segments.h"

#include <array>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/random.h"

using znGeom::MergeSegments;
using znGeom::Polyline;
using znGeom::Segment;
using znLinear::Point;
using znLinear::PointFlt;
using Lines = zn::vector<zn::Reference<Polyline>>;
using Segments = std::deque<Segment>;

namespace {

Lines merged(const Segments& segments, float tolerance)
{
    Lines lines;
    lines.append(new Polyline); // what it held is dropped
    MergeSegments()(lines, segments, tolerance);
    return lines;
}

Segment segment(const PointFlt& from, const PointFlt& to) { return Segment(&from.x, &to.x); }

/// The x of all vertices, line by line.
std::vector<std::vector<double>> placesOf(const Lines& lines)
{
    std::vector<std::vector<double>> places;
    for (const auto& line : lines) {
        places.emplace_back();
        for (int i = 0; i < line->getNumVertices(); ++i) {
            EXPECT_EQ(line->getVertex(i).parameter, i);
            places.back().push_back(line->getVertex(i).point.x);
        }
    }
    return places;
}

/// Asks all ends at every step.
class PlainMerge
{
public:
    PlainMerge(const Segments& segments, float tolerance)
        : m_segments(segments), m_isUsed(segments.size()), m_tolerance(tolerance)
    {
        for (std::size_t i = 0; i < segments.size(); ++i)
            if (!m_isUsed[i]) {
                m_isUsed[i] = true;
                std::deque<Point> line = {end(2 * i), end(2 * i + 1)};
                while (const int next = extension(line[0], line[1])) line.push_front(use(next));
                while (const int next = extension(line.back(), line[line.size() - 2])) line.push_back(use(next));
                lines.push_back(line);
            }
    }

    std::vector<std::deque<Point>> lines;

private:
    Point end(std::size_t number) const
    {
        const Segment& segment = m_segments[number / 2];
        return PointFlt(number % 2 == 0 ? segment.start : segment.end);
    }
    Point use(int next)
    {
        m_isUsed[static_cast<std::size_t>(next - 1) / 2] = true;
        return end(static_cast<std::size_t>(next - 1) ^ 1);
    }

    /// 1 + the number of the end, or 0.
    int extension(const Point& tail, const Point& prior)
    {
        double best = 2 * static_cast<double>(m_tolerance);
        std::size_t answer = 0;
        const PointFlt place(tail);
        for (std::size_t hit = 0; hit < 2 * m_segments.size(); ++hit) {
            const PointFlt other(end(hit));
            bool isInBox = !m_isUsed[hit / 2];
            for (int axis = 0; axis < 3; ++axis)
                isInBox &= other[axis] >= place[axis] - m_tolerance && other[axis] <= place[axis] + m_tolerance;
            if (!isInBox) continue;
            const std::size_t near = distance2(tail, end(hit ^ 1)) < distance2(tail, end(hit)) ? hit ^ 1 : hit;
            const Point nearEnd = end(near), farEnd = end(near ^ 1);
            const double e = 0.01 * std::min(distance(tail, prior), distance(nearEnd, farEnd));
            const bool isBack = dot(tail - prior, farEnd - nearEnd) < 0;
            if (isBack && equivalent(nearEnd, tail, e) && equivalent(farEnd, prior, e)) {
                m_isUsed[hit / 2] = true;
                continue;
            }
            if (!(best > distance2(tail, nearEnd))) continue;
            best = distance2(tail, nearEnd);
            answer = near + 1;
        }
        return static_cast<int>(answer);
    }

    const Segments& m_segments;
    std::vector<bool> m_isUsed;
    float m_tolerance;
};

} // namespace

TEST(MergeSegments, JoinsWhatAPlainSearchJoins)
{
    znTest::Random random(1);
    for (int round = 0; round < 300; ++round) {
        // Ends on a coarse lattice with some jitter: branches, copies, loops, and segments without length.
        Segments segments;
        const int size = 2 + random.below(5), count = 1 + random.below(60);
        const double jitter = round % 3 == 0 ? 0 : 0.02, scale = std::pow(10, random.below(7) - 3);
        const auto place = [&] {
            znLinear::PointFlt p;
            for (int axis = 0; axis < 3; ++axis)
                p[axis] = static_cast<float>(scale * (random.below(axis == 2 ? 2 : size) + random.real(0, jitter)));
            return p;
        };
        for (int i = 0; i < count; ++i) segments.push_back(segment(place(), place()));
        const float tolerance = static_cast<float>(scale * std::array{0.03, 1e-20, 1.5}[random.below(3)]);
        const Lines lines = merged(segments, tolerance);
        const PlainMerge plain(segments, tolerance);
        ASSERT_EQ(static_cast<std::size_t>(lines.size()), plain.lines.size());
        for (int i = 0; i < lines.size(); ++i) {
            const std::deque<Point>& expected = plain.lines[static_cast<std::size_t>(i)];
            ASSERT_EQ(static_cast<std::size_t>(lines[i]->getNumVertices()), expected.size());
            for (int j = 0; j < lines[i]->getNumVertices(); ++j)
                ASSERT_EQ(lines[i]->getVertex(j).point, expected[static_cast<std::size_t>(j)]);
        }
    }
}

TEST(MergeSegments, GrowsInFrontFirstAndDropsCopies)
{
    const PointFlt a(0, 0, 0), b(1, 0, 0), c(2, 0, 0), d(3, 0.5f, 0), e(3, -1, 0), nearB(1.001f, 0, 0);
    using Places = std::vector<std::vector<double>>;
    EXPECT_EQ(placesOf(merged({segment(b, c), segment(d, c), segment(b, a)}, 0.01f)), (Places{{0, 1, 2, 3}}));
    EXPECT_EQ(placesOf(merged({segment(a, b), segment(b, a), segment(a, b), segment(c, b)}, 0.01f)),
              (Places{{0, 1, 2}}));
    EXPECT_EQ(placesOf(merged({segment(b, c), segment(c, d), segment(c, e)}, 0.01f)), (Places{{1, 2, 3}, {2, 3}}))
        << "a branch is a line of its own";
    EXPECT_EQ(placesOf(merged({segment(a, b), segment(nearB, c)}, 0.01f)), (Places{{0, 1, 2}}))
        << "the joint is that of the line";
    EXPECT_EQ(placesOf(merged({segment(a, b), segment(b, c)}, 0)), (Places{{0, 1}, {1, 2}}));
    EXPECT_EQ(merged({}, 0.01f).size(), 0);

    // Squared distances are held to twice the tolerance: 2.25 is below 2 * 2, 6.25 above 2 * 2.6.
    const PointFlt apart(2.5f, 0, 0), farther(3.5f, 0, 0), far(9, 0, 0);
    EXPECT_EQ(merged({segment(a, b), segment(apart, far)}, 2).size(), 1);
    EXPECT_EQ(merged({segment(a, b), segment(farther, far)}, 2.6f).size(), 2);
}

TEST(MergeSegments, ClosesRingsAndEndsOnAnyNumbers)
{
    Segments ring;
    for (int i = 0; i < 100; ++i) {
        const auto at = [](int k) {
            const double angle = k % 100 * 0.0628318530717958648;
            return PointFlt(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0);
        };
        const int k = i * 37 % 100;
        ring.push_back(i % 2 == 0 ? segment(at(k), at(k + 1)) : segment(at(k + 1), at(k)));
    }
    const Lines lines = merged(ring, 1e-6f);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0]->getNumVertices(), 101);
    EXPECT_TRUE(lines[0]->getClosed());

    constexpr float huge = std::numeric_limits<float>::max(), inf = std::numeric_limits<float>::infinity();
    const float numbers[] = {0, -0.0f, huge, -huge, inf, -inf, std::numeric_limits<float>::quiet_NaN(), 1e-45f};
    Segments segments;
    for (const float from : numbers)
        for (const float to : numbers) segments.push_back(segment({from, to, 1}, {to, from, from}));
    for (const float tolerance : {1e-45f, 1.0f, huge, inf, -1.0f, std::numeric_limits<float>::quiet_NaN()})
        EXPECT_GT(merged(segments, tolerance).size(), 0);
}
