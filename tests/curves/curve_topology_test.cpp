#include "znGeom/curves/curve_topology.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

constexpr double tolerance = 1e-6;

/// Two triangles: `lower` with its right angle at the origin, `upper` across the diagonal from (4, 0) to (0, 4).
struct Sheet
{
    TopoMesh mesh;
    TopoMeshVertex origin = mesh.allocVertex({0, 0, 0}), right = mesh.allocVertex({4, 0, 0}),
                   top = mesh.allocVertex({0, 4, 0}), far = mesh.allocVertex({4, 4, 0});
    TopoMeshFace lower = mesh.allocTriangle(origin, right, top), upper = mesh.allocTriangle(right, far, top);
    TopoMeshCurves curves;

    zn::Reference<TopoMeshPoint> at(double x, double y, double tol = tolerance)
    {
        TopoMeshCoord coord;
        coord.setFromPoint(x + y > 4 ? upper : lower, Point(x, y, 0));
        return new TopoMeshPoint(coord, tol);
    }
    TopoMeshCurve& draw(const std::vector<std::pair<double, double>>& places, double tol = tolerance)
    {
        curves.append(TopoMeshCurve());
        for (const auto& [x, y] : places) last().append(at(x, y, tol));
        return last();
    }
    TopoMeshCurve& last() { return *std::prev(curves.end()); }
};

/// The degrees of all nodes, in order.
std::vector<int> degrees(const MeshCurveTopology& graph)
{
    std::vector<int> all;
    for (const auto& [point, node] : graph.getIPoints()) all.push_back(node.getDegree());
    return all;
}

using Degrees = std::vector<int>;

/// That every use names a node of its curve which holds the point, and that points of curves with an entry are there.
void checkGraph(MeshCurveTopology& graph)
{
    std::size_t uses = 0, places = 0;
    for (const auto& [point, node] : graph.getIPoints()) {
        EXPECT_EQ(node.point, point);
        EXPECT_FALSE(node.uses.empty());
        for (const auto& use : node.uses) EXPECT_EQ(use.node.value(), point);
        uses += static_cast<std::size_t>(node.uses.size());
    }
    for (MeshCurveTopologyIterator at(graph.getCurves()); at.valid(); at.next())
        places += graph.getIPoint(at.getIterator().value()) ? 1 : 0;
    EXPECT_EQ(uses, places);
}

} // namespace

TEST(CurveTopology, RepeatsGoAndEndsJoin)
{
    Sheet sheet;
    sheet.draw({{0.5, 0.5}, {1, 1}, {1, 2}});
    const TopoMeshCurve& later = sheet.draw({{0.5, 0.5}, {1, 1}, {2, 1}}); // parts from the first: still a repeat of it
    MeshCurveTopology(sheet.mesh, sheet.curves, tolerance);
    ASSERT_EQ(sheet.curves.size(), 1);
    EXPECT_EQ(&sheet.curves.front(), &later);

    Sheet joined;
    joined.draw({{0.5, 0.5}, {1, 1}});
    joined.draw({{1, 1}, {1, 2}});
    joined.draw({{2, 1}, {1, 1}});         // comes too late for the first, in time for the second
    joined.draw({{0.1, 0.1}, {0.1, 0.1}}); // no length
    joined.draw({{0.2, 3}, {0.5, 3}, {0.5, 3.2}, {0.2, 3}});
    MeshCurveTopology graph(joined.mesh, joined.curves, tolerance);
    EXPECT_EQ(joined.curves.size(), 4);
    EXPECT_EQ(degrees(graph), (Degrees{1, 3, 1, 1, 2}));
    EXPECT_EQ(graph.getLosses().numDegenerate, 1);
    checkGraph(graph);
}

TEST(CurveTopology, CrossingsAreSharedPoints)
{
    Sheet sheet;
    const TopoMeshCurve& level = sheet.draw({{0.5, 1}, {2, 1}});
    const TopoMeshCurve& upright = sheet.draw({{1, 0.5}, {1, 2}});
    const TopoMeshCurve& through =
        sheet.draw({{1.2, 0.6}, {1.5, 1 + 1e-8}, {1.7, 1.4}}); // crosses at a point of its own
    MeshCurveTopology graph(sheet.mesh, sheet.curves, tolerance);
    EXPECT_TRUE(level.size() == 4 && upright.size() == 3 && through.size() == 3);
    EXPECT_EQ(degrees(graph), (Degrees{1, 1, 1, 1, 1, 1, 2, 2}));
    EXPECT_EQ((*std::next(level.begin())), *std::next(upright.begin()));
    EXPECT_EQ((*std::next(level.begin(), 2)), *std::next(through.begin()));
    checkGraph(graph);

    // A curve that crosses itself, and trimming back to that place.
    Sheet loop;
    const TopoMeshCurve& knot = loop.draw({{0.5, 0.5}, {2, 1.5}, {1.5, 2}, {1, 0.5}});
    MeshCurveTopology crossed(loop.mesh, loop.curves, tolerance);
    EXPECT_EQ(degrees(crossed), (Degrees{1, 1, 2}));
    crossed.trimInteriorEndPoints();
    EXPECT_EQ(degrees(crossed), (Degrees{2}));
    EXPECT_TRUE(knot.size() == 4 && knot.front() == knot.back());
    EXPECT_EQ(crossed.getLosses().numTrimmed, 2);
    EXPECT_GT(crossed.getLosses().trimmedLength, 0.8);
    checkGraph(crossed);
}

TEST(CurveTopology, CurvesMeetAlongEdgesAndAtVertices)
{
    Sheet sheet;
    sheet.draw({{4, 0}, {3, 1}, {0, 4}});     // along the diagonal, with a point on it
    sheet.draw({{1, 1}, {2, 2}, {3, 3}});     // across it, with a point there
    sheet.draw({{0.5, 3}, {0, 4}, {1, 3.5}}); // through its end
    MeshCurveTopology graph(sheet.mesh, sheet.curves, tolerance);
    EXPECT_EQ(sheet.curves.front().size(), 4);
    EXPECT_EQ(degrees(graph), (Degrees{1, 1, 1, 1, 1, 2, 2}));
    checkGraph(graph);
    // What dangles goes, but ends on the boundary stay; so do the vertices here.
    graph.trimInteriorEndPoints();
    ASSERT_EQ(sheet.curves.size(), 1);
    EXPECT_EQ(degrees(graph), (Degrees{1, 1}));
    checkGraph(graph);
}

TEST(CurveTopology, FindsWhatIsNearWhereverItIs)
{
    constexpr double wide = 1e-3;
    constexpr int count = 60;
    Sheet joined, repeated;
    for (int i = 0; i < count; ++i) {
        const double x = 1 + 0.13 * wide * i, y = 0.05 + 0.02 * i, off = (i % 2 ? 0.9 : -0.9) * wide;
        joined.draw({{x - 0.5, y}, {x, y}}, wide);
        joined.draw({{x + off, y - off}, {x + 0.5, y}}, wide);
        repeated.draw({{x, y}, {x + 0.5, y}}, wide);
        repeated.draw({{x + 0.5 - off, y}, {x + off, y + off}}, wide);
    }
    const MeshCurveTopology ends(joined.mesh, joined.curves, wide), alike(repeated.mesh, repeated.curves, wide);
    const Degrees all = degrees(ends);
    EXPECT_EQ(std::count(all.begin(), all.end(), 2), count);
    EXPECT_EQ(all.size(), 3U * count);
    EXPECT_EQ(alike.getLosses().numRepeated, count);
}

TEST(CurveTopology, TrimmingLoosensEarlierCurves)
{
    Sheet sheet;
    sheet.draw({{0, 1}, {1, 1}}); // from the boundary to where the next begins
    sheet.draw({{1, 1}, {1, 2}});
    sheet.draw({{0, 3}, {0.5, 3}, {0, 3.4}});
    MeshCurveTopology graph(sheet.mesh, sheet.curves, tolerance);
    graph.trimInteriorEndPoints();
    ASSERT_EQ(sheet.curves.size(), 1);
    EXPECT_EQ(sheet.curves.front().size(), 3);
    EXPECT_EQ(graph.getLosses().numTrimmed, 2);
    EXPECT_NEAR(graph.getLosses().trimmedLength, 2, 1e-12);
    checkGraph(graph);
}

TEST(CurveTopology, NoCurveLosesItsWayWherePointsBecomeOne)
{
    // The crossing lies within the tolerance of a point on the diagonal from which its curve goes on across it.
    Sheet sheet;
    const double wide = 1e-2;
    const TopoMeshCurve& across = sheet.draw({{1, 1}, {2, 2}, {3, 3}}, wide);
    sheet.draw({{1, 2.973}, {2, 1.981}, {2.5, 1.45}}, wide);
    MeshCurveTopology graph(sheet.mesh, sheet.curves, wide);
    EXPECT_EQ(across.size(), 3);
    for (const TopoMeshCurve& curve : sheet.curves)
        for (auto point = curve.begin(); std::next(point) != curve.end(); ++point)
            EXPECT_TRUE((*point)->adjacent(**std::next(point)));
    checkGraph(graph);
}

TEST(CurveTopology, RunsBecomeCurvesAndEndsReachASide)
{
    Sheet sheet;
    std::deque<TopoMeshCoord> coords;
    for (const auto& [x, y] : {std::pair{1.0, 1.0}, {1.0, 1.0}, {1.5, 1.0}, {3.0, 3.0}, {2.5, 2.5}})
        coords.push_back(sheet.at(x, y)->coord);
    MeshCurveTopology::convert(sheet.curves, coords, tolerance);
    ASSERT_EQ(sheet.curves.size(), 2); // from one face straight into another is a leap
    EXPECT_TRUE(sheet.curves.front().size() == 2 && sheet.last().size() == 2);
    MeshCurveTopology::extend(sheet.curves, tolerance);
    const auto expectAt = [](const TopoMeshPoint& point, double x, double y, int kind) {
        EXPECT_NEAR(distance(point.position, Point(x, y, 0)), 0, 1e-9);
        EXPECT_EQ(point.kind, kind);
    };
    expectAt(*sheet.curves.front().front(), 0, 1, 1);
    expectAt(*sheet.curves.front().back(), 3, 1, 1);
    expectAt(*sheet.last().front(), 4, 4, 0);
    expectAt(*sheet.last().back(), 2, 2, 1);
    Sheet meeting;
    const TopoMeshCurve& one = meeting.draw({{1, 0.5}, {1, 1}});
    meeting.draw({{1, 1}, {2, 1}});
    MeshCurveTopology::extend(meeting.curves, tolerance);
    expectAt(*one.front(), 1, 0, 1);
    expectAt(*one.back(), 1, 1, 2);
    expectAt(*meeting.last().front(), 1, 1, 2);
    MeshCurveTopology::convert(sheet.curves, {}, tolerance);
    EXPECT_TRUE(sheet.last().empty());
    MeshCurveTopology graph(sheet.mesh, sheet.curves, tolerance); // and an empty one does no harm
    EXPECT_EQ(sheet.curves.size(), 3);
}

TEST(CurveTopology, EndsOnEveryInput)
{
    const double nan = std::nan("");
    for (const double tol : {1e-6, 1e-2, 0.0, -1.0, nan, 10.0}) {
        std::vector<std::vector<int>> graphs;
        for (int run = 0; run < 2; ++run) {
            Sheet sheet;
            Random random(7);
            for (int i = 0; i < 30; ++i) { // hundreds of segments within two triangles
                std::vector<std::pair<double, double>> places;
                for (int k = 0; k < 9; ++k) places.emplace_back(random.real(0, 2), random.real(0, 2));
                places.push_back(i % 3 == 0 ? places.front() : places.back());
                if (i % 7 == 0) places[4] = {nan, 1};
                if (i % 5 == 0) places[2] = {0, 4};
                sheet.draw(places, tol);
            }
            MeshCurveTopology graph(sheet.mesh, sheet.curves, tol);
            checkGraph(graph);
            graph.trimInteriorEndPoints();
            checkGraph(graph);
            graphs.push_back(degrees(graph));
        }
        EXPECT_EQ(graphs[0], graphs[1]);
        if (tol == 1e-6) {
            EXPECT_GT(graphs[0].size(), 1000U);
        }
    }
    TopoMesh mesh;
    TopoMeshCurves none;
    MeshCurveTopology graph(mesh, none, tolerance);
    graph.trimInteriorEndPoints();
    EXPECT_TRUE(graph.getIPoints().empty());
}
