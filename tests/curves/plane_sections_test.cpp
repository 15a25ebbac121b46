#include "znGeom/curves/plane_sections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "znGeom/analysis/edge_sides.h"
#include "znGeom/analysis/volume.h"
#include "znGeom/curves/plane_section.h"
#include "znGeom/planar/polylines/merge_segments.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Normal;
using znLinear::Plane;
using znLinear::Point;
using znLinear::Vector;

namespace {

/// Nothing but what has the same digits.
constexpr float touching = std::numeric_limits<float>::denorm_min();

using Visit = std::function<void(int, const std::deque<Segment>&)>;

void cutEvery(const CompactMesh& mesh, const Plane& plane, double step, int count, const Visit& visit)
{
    znUtil::Progress progress;
    EXPECT_TRUE(meshPlaneSections(mesh, plane, step, count, visit, progress));
}

bool isClosed(const CompactMesh& mesh)
{
    MeshEdgeSides edges;
    meshEdgeSides(mesh, edges);
    for (int edge = 0; edge < edges.getNumEdges(); ++edge)
        if (edges.sides(edge).size() % 2 != 0) return false;
    return true;
}

Vector place(const float* p) { return Point(znLinear::PointFlt(p[0], p[1], p[2])).asVector(); }

/// Twice the area that segments go round, seen along an axis.
double twiceArea(const std::deque<Segment>& segments, const Vector& axis)
{
    double sum = 0;
    for (const Segment& segment : segments) sum += dot(axis, cross(place(segment.start), place(segment.end)));
    return sum;
}

/// How much of a line across outlines lies inside: between the first and the second crossing, the third and so on.
double widthInside(const zn::vector<zn::Reference<Polyline>>& lines, double y)
{
    std::vector<double> crossings;
    for (const auto& line : lines)
        for (int i = 0; i + 1 < line->getNumVertices(); ++i) {
            const Point &a = line->getVertex(i).point, &b = line->getVertex(i + 1).point;
            if ((a.y > y) != (b.y > y)) crossings.push_back(a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y));
        }
    std::sort(crossings.begin(), crossings.end());
    double width = 0;
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) width += crossings[i + 1] - crossings[i];
    return width;
}

} // namespace

TEST(PlaneSections, OfClosedMeshesAreClosedOutlinesWhoseAreasGiveTheVolume)
{
    CompactMesh mesh, torus;
    makeTorus(mesh, 80, 40);
    makeSoup(torus, mesh); // neighbours meet where they have vertices of their own as well
    const int count = 120;
    const double step = 0.8 / count, rowStep = 2.8 / 300;
    double volume = 0;
    const Plane lowest({0, 0, -0.4 + step / 2}, Normal(Vector::z));
    cutEvery(torus, lowest, step, count, [&](int, const std::deque<Segment>& segments) {
        zn::vector<zn::Reference<Polyline>> lines;
        MergeSegments()(lines, segments, touching);
        EXPECT_EQ(lines.size(), 2);
        for (int row = 0; row < 300; ++row) volume += step * rowStep * widthInside(lines, -1.4 + rowStep * (row + 0.5));
    });
    EXPECT_NEAR(volume, meshVolume(torus), 1e-3 * volume);
}

TEST(PlaneSections, UseEverySegmentOfSharedMeshesOnce)
{
    forEachSharedMesh(100000, [](const CompactMesh& mesh) {
        if (!isClosed(mesh)) return;
        for (const Vector& axis : {Vector::x, Vector::y, Vector::z, Vector(0.36, 0.48, 0.8)}) {
            double low = std::numeric_limits<double>::max(), high = -low, twice = 0;
            for (int v = 0; v < mesh.getNumVertices(); ++v) {
                const double height = dot(axis, mesh.getVertices()[v].asPoint().asVector());
                low = std::min(low, height), high = std::max(high, height);
            }
            const int count = 100;
            const double step = (high - low) / count;
            const Plane lowest((axis * (low + step / 2)).asPoint(), Normal(axis));
            cutEvery(mesh, lowest, step, count, [&](int, const std::deque<Segment>& segments) {
                zn::vector<zn::Reference<Polyline>> lines;
                MergeSegments()(lines, segments, touching);
                std::size_t numLaid = 0;
                for (const auto& line : lines) {
                    EXPECT_EQ(line->getVertex(0).point, line->getVertex(line->getNumVertices() - 1).point);
                    numLaid += static_cast<std::size_t>(line->getNumVertices() - 1);
                }
                EXPECT_EQ(numLaid, segments.size());
                twice += twiceArea(segments, axis);
            });
            EXPECT_NEAR(step * twice / 2, meshVolume(mesh), 0.01 * std::fabs(meshVolume(mesh)));
        }
    });
}

TEST(PlaneSections, AreThoseOfEachPlaneByItself)
{
    CompactMesh sphere;
    makeSphere(sphere, 3);
    const Plane lowest({0, 0, -1.25}, Normal(Vector::z)); // the poles, the equator and eight vertices lie on planes
    int numPlanes = 0;
    cutEvery(sphere, lowest, 0.25, 11, [&](int i, const std::deque<Segment>& segments) {
        EXPECT_EQ(i, numPlanes++);
        zn::vector<zn::Reference<Polyline>> lines;
        MergeSegments()(lines, segments, touching);
        const auto curves = meshPlaneSection(sphere, {{0, 0, -1.25 + 0.25 * i}, Normal(Vector::z)});
        ASSERT_EQ(lines.size(), curves.size()) << i;
        for (int k = 0; k < lines.size(); ++k) {
            EXPECT_NEAR(lines[k]->getLength(0, 1e9), curves[k]->length(sphere), 1e-5);
            EXPECT_GT(twiceArea(segments, Vector::z), 0);
        }
    });
    EXPECT_EQ(numPlanes, 11);
}

TEST(PlaneSections, EndAfterACancelAndLeaveOutWhatIsNotFinite)
{
    CompactMesh grid = makeGrid(20, 20);
    znUtil::Progress progress;
    int numPlanes = 0;
    const auto cancelThird = [&](int i, const std::deque<Segment>&) {
        ++numPlanes;
        if (i == 2) progress.cancel();
    };
    EXPECT_FALSE(meshPlaneSections(grid, {{0.5, 0, 0}, Normal(Vector::x)}, 1, 18, cancelThird, progress));
    EXPECT_EQ(numPlanes, 3);
    grid.getVertices()[0].x = std::numeric_limits<float>::quiet_NaN();
    cutEvery(grid, {{0.5, 0, 0}, Normal(Vector::x)}, 1, 2,
             [](int i, const std::deque<Segment>& segments) { EXPECT_EQ(segments.size(), i == 0 ? 36u : 38u); });
}

TEST(PlaneSections, LeaveNothingOfSheetsThatCoincide)
{
    CompactMesh cube;
    makeCube(cube);
    std::vector<MeshTriangle> turned; // of the face at x = 1
    for (int t = 0; t < cube.getNumTriangles(); ++t) {
        const auto [a, b, c] = cube.getTriangles()[t].corners;
        const MeshVertex* const vertices = cube.getVertices();
        if (vertices[a].x + vertices[b].x + vertices[c].x == 3) turned.push_back({a, c, b});
    }
    cube.resizeTriangleArray(14);
    std::copy(turned.begin(), turned.end(), cube.getTriangles() + 12);
    cutEvery(cube, {{0, 0, 0.25}, Normal(Vector::z)}, 1, 1,
             [](int, const std::deque<Segment>& segments) { EXPECT_EQ(segments.size(), 6U); });
}
