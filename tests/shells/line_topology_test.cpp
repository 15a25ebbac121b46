#include "znGeom/shells/line_topology.h"

#include <cmath>
#include <limits>
#include <map>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "znGeom/foundation/linear/line.h"
#include "znGeom/shells/internal/line_matches.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

using Topology = MeshLineTopology::TopologyAlg;
using Edge = MeshLineTopology::Edge;
using Strip = std::vector<Point>;

CompactMesh makeLines(const std::vector<Strip>& strips)
{
    CompactMesh lines;
    int numPoints = 0;
    for (const Strip& strip : strips) numPoints += static_cast<int>(strip.size());
    lines.resizeVertexArray(numPoints);
    lines.resizeLineStripArrays(numPoints, static_cast<int>(strips.size()));
    int next = 0, length = 0;
    for (const Strip& strip : strips) {
        lines.getLineStripLengths()[length++] = static_cast<int>(strip.size());
        for (const Point& point : strip) {
            lines.getVertices()[next].set(&point.x);
            lines.getLineStripPoints()[next] = next;
            ++next;
        }
    }
    return lines;
}

/// A closed polyline through corners, `perUnit` samples to the unit, each corner one of them.
Strip through(const std::vector<Point>& corners, int perUnit)
{
    Strip strip;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point from = corners[i], to = corners[(i + 1) % corners.size()];
        const int count = std::max(1, static_cast<int>(std::lround(distance(from, to) * perUnit)));
        for (int k = 0; k < count; ++k) strip.push_back(from + (to - from) * (double(k) / count));
    }
    return strip;
}

Strip rectangle(double x0, double y0, double x1, double y1, int perUnit = 20)
{
    return through({{x0, y0, 0}, {x1, y0, 0}, {x1, y1, 0}, {x0, y1, 0}}, perUnit);
}

Point placeOf(const CompactMesh& lines, const MeshLineTopology::Point& point)
{
    return lines.getVertices()[point.getSample()].asPoint();
}

std::vector<Edge> edgesOf(const Topology& topology)
{
    std::vector<Edge> edges;
    for (MeshLineTopology::EdgeIterator it(topology); it.valid(); it.next()) edges.push_back(*it);
    return edges;
}

/// What holds of every topology.
void checkStructure(const Topology& topology)
{
    std::map<int, int> degrees;
    for (const Edge& edge : edgesOf(topology)) {
        EXPECT_EQ(edge.getNextOnBoundary().getPrevOnBoundary(), edge);
        EXPECT_EQ(edge.getNextOnBoundary().getFirstPoint(), edge.getSecondPoint());
        EXPECT_EQ(edge.isLinear() || edge.isCircular(), static_cast<bool>(edge.getTwin()));
        ++degrees[edge.getFirstVertex().index()];
        ++degrees[edge.getSecondVertex().index()];
        if (!edge.getTwin()) continue;
        EXPECT_EQ(edge.getTwin().getTwin(), edge);
        EXPECT_EQ(edge.isTwinReversed(), edge.getTwin().isTwinReversed());
        EXPECT_EQ(edge.getFirstVertex(),
                  edge.isTwinReversed() ? edge.getTwin().getFirstVertex() : edge.getTwin().getSecondVertex());
    }
    EXPECT_EQ(static_cast<int>(degrees.size()), topology.getNumVertices());
    for (const Edge& edge : edgesOf(topology))
        EXPECT_EQ(edge.getFirstVertex().getDegree(), degrees[edge.getFirstVertex().index()]);
}

} // namespace

TEST(LineTopology, PairsStretchesFromCornerToCorner)
{
    // Two sheets above a long one, all of them 0.03 apart, and a ring far away.
    const CompactMesh lines = makeLines(
        {rectangle(0, 0, 1, 1), rectangle(1.03, 0, 2, 1), rectangle(0, -2, 2, -0.03, 23), rectangle(5, 5, 6, 6)});
    Topology topology(lines);
    ASSERT_TRUE(topology.compute(0.1));
    checkStructure(topology);
    EXPECT_EQ(topology.getNumBoundaries(), 4);
    EXPECT_FALSE(topology.hasReversedTwins());
    std::vector<std::pair<Point, Point>> paired;
    for (const Edge& edge : edgesOf(topology)) {
        EXPECT_FALSE(edge.isCircular());
        if (edge.isLinear())
            paired.emplace_back(placeOf(lines, edge.getFirstPoint()), placeOf(lines, edge.getSecondPoint()));
    }
    const auto near = [](const Point& a, double x, double y) { return distance(a, Point(x, y, 0)) < 0.045; };
    ASSERT_EQ(paired.size(), 6u);
    EXPECT_TRUE(near(paired[0].first, 0, 0) && near(paired[0].second, 1, 0));
    EXPECT_TRUE(near(paired[1].first, 1, 0) && near(paired[1].second, 1, 1));
    EXPECT_TRUE(near(paired[2].first, 1.03, 0) && near(paired[2].second, 2, 0));
    EXPECT_TRUE(near(paired[3].first, 1.03, 1) && near(paired[3].second, 1.03, 0));
    EXPECT_TRUE(near(paired[4].first, 2, -0.03) && near(paired[4].second, 1.03, -0.03));
    EXPECT_TRUE(near(paired[5].first, 1, -0.03) && near(paired[5].second, 0, -0.03));
    const Edge lone = topology.getFirstEdgeOnBoundary(3);
    EXPECT_EQ(lone.getNextOnBoundary(), lone);
    EXPECT_EQ(lone.getFirstPoint(), lone.getSecondPoint());
    EXPECT_EQ(lone.getFirstVertex().getFirstEdge(), lone);
    EXPECT_NEAR(lone.getLength(), 4, 1e-6);
}

TEST(LineTopology, EndsExactlyWhereThreeStripsMeetHoweverNearTheSamplesBeside)
{
    const Point corner(1, 0, 0);
    Strip left = rectangle(0, 0, 1, 1), right = rectangle(1, 0, 2, 1), below = rectangle(0, -1, 2, 0, 23);
    left.insert(std::find(left.begin(), left.end(), corner), Point(0.992, 0, 0));
    right.insert(right.end(), Point(1, 0.007, 0));
    below.insert(std::find(below.begin(), below.end(), corner), Point(1.006, 0, 0));
    const CompactMesh lines = makeLines({left, right, below});
    Topology topology(lines);
    ASSERT_TRUE(topology.compute(0.1));
    checkStructure(topology);
    int numEnds = 0, numPaired = 0;
    for (const Edge& edge : edgesOf(topology)) {
        numPaired += edge.isLinear();
        for (const auto& point : {edge.getFirstPoint(), edge.getSecondPoint()})
            numEnds += edge.isLinear() && placeOf(lines, point) == corner;
    }
    EXPECT_TRUE(numPaired == 6 && numEnds == 6) << numPaired << ' ' << numEnds;
}

TEST(LineTopology, PairsWholeLoopsAndBothSidesOfASlit)
{
    Strip inner = rectangle(0, 0, 1, 1, 33);
    std::reverse(inner.begin(), inner.end());
    const Strip slit = through({{3, 0, 0}, {5, 0.02, 0}, {7, 0, 0}, {5, -0.02, 0}}, 20);
    const CompactMesh lines = makeLines({rectangle(-0.02, -0.02, 1.02, 1.02), inner, slit});
    Topology topology(lines);
    ASSERT_TRUE(topology.compute(0.1));
    checkStructure(topology);
    const std::vector<Edge> edges = edgesOf(topology);
    ASSERT_EQ(edges.size(), 4u);
    EXPECT_TRUE(edges[0].isCircular());
    EXPECT_EQ(edges[0].getTwin(), edges[1]);
    EXPECT_LT(distance(placeOf(lines, edges[0].getFirstPoint()), placeOf(lines, edges[1].getSecondPoint())), 0.06);
    EXPECT_EQ(edges[2].getTwin(), edges[3]);
    EXPECT_EQ(placeOf(lines, edges[2].getFirstPoint()), Point(3, 0, 0));
    EXPECT_EQ(placeOf(lines, edges[2].getSecondPoint()), Point(7, 0, 0));
    EXPECT_EQ(topology.getNumVertices(), 3);
}

TEST(LineTopology, TellsWhichStripsRunAgainstTheOthers)
{
    // The second of three squares in a row is turned over; the fourth belongs to the group of the second.
    Strip turned = rectangle(1.02, 0, 2, 1);
    std::reverse(turned.begin(), turned.end());
    const CompactMesh lines =
        makeLines({rectangle(0, 0, 1, 1), turned, rectangle(2.02, 0, 3, 1), rectangle(9, 0, 10, 1)});
    Topology topology(lines);
    ASSERT_TRUE(topology.compute(0.1));
    checkStructure(topology);
    EXPECT_TRUE(topology.hasReversedTwins());
    BitVector expected(4);
    expected.setBit(1);
    EXPECT_EQ(topology.getOrientation(), expected);
    expected.setBit(3);
    EXPECT_EQ(topology.getOrientation({0, 1, 2, 1}), expected);
    EXPECT_EQ(topology.getOrientation({0, 0, 0, 0}).getNumSetBits(), 0);
}

TEST(LineTopology, MatchesAreThoseOfATestOfAllSegments)
{
    Random random(3);
    for (int round = 0; round < 12; ++round) {
        std::vector<Strip> strips(3);
        for (Strip& strip : strips)
            for (int i = 0; i < 120; ++i) {
                const double angle = 2 * 3.14159265358979 * i / 120;
                strip.push_back(Point(std::cos(angle), std::sin(angle), 0) + random.vector(0.02));
            }
        if (round % 2 == 1) std::reverse(strips[1].begin(), strips[1].end());
        const CompactMesh mesh = makeLines(strips);
        const internal::LineStrips lines(mesh);
        const double tolerance = round % 3 == 0 ? 0.02 : 0.06;
        znUtil::ThreadPool pool(3);
        const internal::LineMatches matches = internal::findLineMatches(lines, tolerance, pool);
        for (int sample = 0; sample < lines.size(); ++sample) {
            const Point& place = lines.points[sample];
            const znLinear::Normal before(place - lines.points[lines.prev(sample)]),
                after(lines.points[lines.next(sample)] - place);
            std::map<std::pair<int, bool>, double> nearest;
            for (int k = 0; k < lines.size(); ++k) {
                const znLinear::ParamLine line(lines.points[k], lines.points[lines.next(k)]);
                const Point at = line.projectBounded(place, 0, 1);
                const znLinear::Normal along(line.direction);
                const double arc = lines.arc(k) + distance(line.point, at), apart = distance(place, at);
                const int strip = lines.strip(k);
                const bool isClose =
                    strip == lines.strip(sample) && lines.wayBetween(strip, arc, lines.arc(sample)) < 4 * tolerance;
                if (!(apart < tolerance) || isClose) continue;
                for (const bool forward : {false, true}) {
                    const double sign = forward ? 1 : -1;
                    if (std::max(sign * dot(along, before), sign * dot(along, after)) < 0.5) continue;
                    const auto [entry, isNew] = nearest.try_emplace({strip, forward}, apart);
                    if (!isNew) entry->second = std::min(entry->second, apart);
                }
            }
            ASSERT_EQ(matches.of(sample).size(), nearest.size());
            for (const internal::LineMatch& match : matches.of(sample))
                EXPECT_NEAR(std::sqrt(match.distance2), nearest.at({match.strip, match.isForward}), 1e-12);
        }
    }
}

TEST(LineTopology, IsTheSameOnEveryPoolAndEndsForEveryTolerance)
{
    std::vector<Strip> strips;
    for (int i = 0; i < 30; ++i) strips.push_back(rectangle(i * 1.01, 0, i * 1.01 + 1, 3, 50 + i));
    const CompactMesh lines = makeLines(strips);
    std::vector<std::vector<int>> results;
    for (const int numThreads : {1, 2, 7}) {
        znUtil::ThreadPool pool(numThreads);
        Topology topology(lines);
        ASSERT_TRUE(topology.compute(0.1, pool));
        results.emplace_back();
        for (const Edge& edge : edgesOf(topology))
            results.back().insert(results.back().end(),
                                  {edge.getFirstPoint().getSample(), edge.getTwin() ? edge.getTwin().index() : -1});
    }
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], results[2]);
    constexpr double infinite = std::numeric_limits<double>::infinity();
    Topology topology(lines);
    for (const double tolerance : {0.0, -1.0, infinite, -infinite, std::nan(""), 1e-300, 1e300})
        EXPECT_FALSE(topology.compute(tolerance));
    std::vector<Strip> broken = strips;
    broken[0][7].x = infinite;
    broken[1][3].y = std::nan("");
    broken.emplace_back();
    broken.push_back({Point(0, 0, 0)});
    broken.push_back(Strip(50, Point(1, 1, 1)));
    const CompactMesh odd = makeLines(broken);
    Topology ofOdd(odd);
    EXPECT_TRUE(ofOdd.compute(0.1));
    EXPECT_FALSE(ofOdd.compute(30));
    const CompactMesh none;
    EXPECT_FALSE(Topology(none).compute(1));
}
