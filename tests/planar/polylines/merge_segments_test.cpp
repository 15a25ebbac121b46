#include "znGeom/planar/polylines/merge_segments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/random.h"
#include "znGeom/spatial/trees/kd_tree.h"

using znGeom::MergeSegments;
using znGeom::Polyline;
using znGeom::Segment;
using znLinear::Point;
using znTest::Random;

namespace {

using Lines = std::vector<std::vector<Point>>;

Segment segment(const Point& from, const Point& to)
{
    const double start[] = {from.x, from.y, from.z}, end[] = {to.x, to.y, to.z};
    return {start, end};
}

Point placeOf(const float* p) { return Point(znLinear::PointFlt(p[0], p[1], p[2])); }
Point startOf(const Segment& s) { return placeOf(s.start); }
Point endOf(const Segment& s) { return placeOf(s.end); }

Lines merged(const std::deque<Segment>& segments, float tolerance)
{
    zn::vector<zn::Reference<Polyline>> lines(1);
    MergeSegments()(lines, segments, tolerance);
    Lines points;
    for (const auto& line : lines) {
        points.emplace_back();
        for (int i = 0; i < line->getNumVertices(); ++i) {
            EXPECT_EQ(line->getVertex(i).parameter, i);
            points.back().push_back(line->getVertex(i).point);
        }
    }
    return points;
}

/// The rules as they read, with points in a deque and a tree of all ends.
class PlainMerge
{
public:
    PlainMerge(const std::deque<Segment>& segments, float tolerance)
        : m_segments(segments), m_tolerance(tolerance), m_tree(0), m_visited(segments.size(), false)
    {
        for (const Segment& s : segments)
            for (const float* end : {s.start, s.end}) m_ends.insert(m_ends.end(), end, end + 3);
        for (int i = 0; i < 2 * static_cast<int>(segments.size()); ++i) m_tree.insert(m_ends.data(), i);
    }

    Lines run()
    {
        Lines lines;
        for (std::size_t s = 0; s < m_segments.size(); ++s) {
            if (m_visited[s]) continue;
            m_visited[s] = true;
            std::deque<Point> line{startOf(m_segments[s]), endOf(m_segments[s])};
            for (int end; (end = extension(line[0], line[1])) >= 0;) line.push_front(take(end));
            for (int end; (end = extension(line.back(), line[line.size() - 2])) >= 0;) line.push_back(take(end));
            lines.emplace_back(line.begin(), line.end());
        }
        return lines;
    }

private:
    Point at(int end) const { return placeOf(&m_ends[3 * static_cast<std::size_t>(end)]); }
    Point take(int end)
    {
        m_visited[static_cast<std::size_t>(end) / 2] = true;
        return at(end ^ 1);
    }
    int extension(const Point& tail, const Point& prior)
    {
        float box[6];
        for (int axis = 0; axis < 3; ++axis) {
            box[axis] = static_cast<float>(tail[axis]) - m_tolerance;
            box[axis + 3] = static_cast<float>(tail[axis]) + m_tolerance;
        }
        std::vector<int> hits;
        m_tree.searchAll(m_ends.data(), box, hits);
        int answer = -1;
        double best = 2.0 * static_cast<double>(m_tolerance);
        for (const int hit : hits) {
            if (m_visited[static_cast<std::size_t>(hit) / 2]) continue;
            const bool isNear = distance2(at(hit), tail) <= distance2(at(hit ^ 1), tail);
            const Point near = at(isNear ? hit : hit ^ 1), far = at(isNear ? hit ^ 1 : hit);
            znLinear::Vector along = tail - prior, away = far - near;
            const double e = 0.01 * std::min(along.length(), away.length());
            if (along.normalize() && away.normalize() && dot(along, away) < 0 && equivalent(near, tail, e) &&
                equivalent(far, prior, e)) {
                m_visited[static_cast<std::size_t>(hit) / 2] = true;
                continue;
            }
            if (best > distance2(tail, near)) {
                best = distance2(tail, near);
                answer = isNear ? hit : hit ^ 1;
            }
        }
        return answer;
    }

    const std::deque<Segment>& m_segments;
    float m_tolerance;
    std::vector<float> m_ends;
    znGeom::KDTree m_tree;
    std::vector<bool> m_visited;
};

} // namespace

TEST(MergeSegments, JoinsEndsWithinTheToleranceAndKeepsTheLinesOwnPoints)
{
    const Point a(0, 0, 0), b(1, 0, 0), c(1, 1, 0), d(0, 1, 0), e(2, 0, 0), nearB(1.0625, 0, 0);
    // A square in no order and of any direction comes back to its first point; it grows at its start.
    EXPECT_EQ(merged({segment(a, b), segment(c, d), segment(c, b), segment(a, d)}, 0.01f), (Lines{{b, c, d, a, b}}));
    // The nearest end goes on, of equally near ones the first; the joint is the line's own point.
    EXPECT_EQ(merged({segment(a, b), segment(nearB, c), segment(b, e)}, 0.125f), (Lines{{a, b, e}, {nearB, c}}));
    EXPECT_EQ(merged({segment(a, b), segment(e, b), segment(b, c)}, 0.125f), (Lines{{a, b, e}, {b, c}}));
    EXPECT_EQ(merged({segment(a, b), segment(nearB, c)}, 0.125f), (Lines{{a, b, c}}));
    EXPECT_EQ(merged({segment(a, b), segment(nearB, c)}, 0.0625f), (Lines{{a, b, c}})); // on the border of the box
    EXPECT_EQ(merged({segment(a, b), segment(nearB, c)}, 0.03125f), (Lines{{a, b}, {nearB, c}}));
    // Twice there, the other way round: laid once. The same way round it is found at the other end.
    EXPECT_EQ(merged({segment(a, b), segment(b, a)}, 0.01f), (Lines{{a, b}}));
    EXPECT_EQ(merged({segment(a, b), segment(b, c), segment(b, a), segment(a, b)}, 0.01f), (Lines{{a, b, c}}));
    // The bound is twice the tolerance for the square of the distance: 3 is too far for a tolerance of 4, 2.5 is not.
    const Point far(10, 0, 0), three(13, 0, 0), lessThanThree(12.5, 0, 0), end(99, 0, 0);
    EXPECT_EQ(merged({segment(a, far), segment(three, end)}, 4), (Lines{{a, far}, {three, end}}));
    EXPECT_EQ(merged({segment(a, far), segment(lessThanThree, end)}, 4), (Lines{{a, far, end}}));
}

TEST(MergeSegments, EndsOnEveryInput)
{
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    const Point a(0, 0, 0), b(1, 0, 0), c(2, 0, 0), lost(nan, 0, 0), beyond(inf, 0, 0);
    EXPECT_TRUE(merged({}, 1).empty());
    for (const double tolerance : {0.0, -1.0, nan})
        EXPECT_EQ(merged({segment(a, b), segment(b, c)}, static_cast<float>(tolerance)), (Lines{{a, b}, {b, c}}));
    EXPECT_EQ(merged({segment(a, b), segment(b, c)}, static_cast<float>(inf)), (Lines{{c, a, b}}));
    EXPECT_EQ(merged({segment(a, beyond), segment(beyond, c), segment(b, a)}, 0.1f),
              (Lines{{b, a, beyond}, {beyond, c}}));
    EXPECT_EQ(merged({segment(a, lost), segment(lost, b)}, 0.1f).size(), 2u);
    EXPECT_EQ(merged({segment(a, a), segment(a, a), segment(a, b)}, 0.1f), (Lines{{b, a, a, a}}));
    // Far out, numbers step by more than the tolerance.
    const Point p(1e30, 1, 1), q(-1e30, 1, 1), r(3e30, 1, 1);
    EXPECT_EQ(merged({segment(q, p), segment(p, r)}, 0.01f), merged({segment(q, p), segment(p, r)}, 0.1f));
    EXPECT_EQ(merged({segment(q, p), segment(p, r)}, 0.01f).size(), 1u);
}

TEST(MergeSegments, GivesWhatThePlainRulesGive)
{
    Random random(5);
    for (int round = 0; round < 300; ++round) {
        // Paths over a lattice, shaken, with doubled segments and branches, in any order.
        const double scale = std::pow(10.0, random.real(-3, 3)), shake = random.oneIn(2) ? 0 : random.real(0, 0.2);
        const auto place = [&](const Point& p) { return (p + random.vector(shake)).asVector() * scale; };
        std::deque<Segment> segments;
        Point at = random.point(2);
        for (int i = random.below(80); i >= 0; --i) {
            if (random.oneIn(8)) at = Point(random.below(4), random.below(4), random.below(2));
            Point next = at;
            next[random.below(3)] += random.oneIn(2) ? 1 : -1;
            const Segment laid = segment(place(at).asPoint(), place(next).asPoint());
            segments.push_back(random.oneIn(2) ? laid : segment(endOf(laid), startOf(laid)));
            if (random.oneIn(6)) segments.push_back(segments[random.below(static_cast<int>(segments.size()))]);
            at = next;
        }
        for (int i = static_cast<int>(segments.size()) - 1; i > 0; --i)
            std::swap(segments[static_cast<std::size_t>(i)], segments[static_cast<std::size_t>(random.below(i + 1))]);
        const float tolerance = static_cast<float>(scale * random.real(0.001, random.oneIn(3) ? 3 : 0.4));
        EXPECT_EQ(merged(segments, tolerance), PlainMerge(segments, tolerance).run()) << round;
    }
}
