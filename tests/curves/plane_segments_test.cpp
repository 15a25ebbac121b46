#include "znGeom/curves/plane_segments.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/edge_sides.h"
#include "znGeom/analysis/volume.h"
#include "znGeom/planar/merge_segments.h"

using znGeom::CompactMesh;
using znGeom::Segment;
using znLinear::Point;
using Segments = std::deque<Segment>;

namespace {

constexpr float sameBits = std::numeric_limits<float>::min();
const znLinear::Normal axes[] = {znLinear::Normal(1, 0, 0), znLinear::Normal(0, 1, 0), znLinear::Normal(0, 0, 1)};

struct Outlines
{
    int numOpen = 0, numClosed = 0, numSegments = 0;
    double area = 0; ///< of what they run round counter-clockwise

    Outlines(const Segments& segments, int axis)
    {
        zn::vector<zn::Reference<znGeom::Polyline>> lines;
        znGeom::MergeSegments()(lines, segments, sameBits);
        for (const auto& line : lines) {
            const int last = line->getNumVertices() - 1;
            const Point& first = line->getVertex(0).point;
            (line->getVertex(last).point == first ? numClosed : numOpen) += 1;
            numSegments += last;
            for (int i = 0; i < last; ++i)
                area += 0.5 * cross(line->getVertex(i).point - first, line->getVertex(i + 1).point - first)[axis];
        }
    }
};

bool isClosed(const CompactMesh& mesh)
{
    znGeom::MeshEdgeSides edges;
    meshEdgeSides(mesh, edges);
    for (int edge = 0; edge < edges.getNumEdges(); ++edge)
        if (edges.sides(edge).size() % 2 != 0) return false;
    return mesh.getNumTriangles() > 0;
}

/// Closed outlines alone, every segment in one of them, and the volume.
void expectWhole(const CompactMesh& mesh, double precision)
{
    double low[3], high[3];
    meshBoundingBox(mesh, low, high);
    for (int axis = 0; axis < 3; ++axis) {
        constexpr int count = 150;
        const double step = (high[axis] - low[axis]) / count;
        zn::vector<double> heights;
        for (int i = 0; i < count; ++i) heights.append(low[axis] + (i + 0.5) * step);
        double volume = 0;
        for (const Segments& segments : meshPlaneSegments(mesh, axes[axis], heights)) {
            const Outlines outlines(segments, axis);
            ASSERT_EQ(outlines.numOpen, 0);
            ASSERT_EQ(static_cast<std::size_t>(outlines.numSegments), segments.size());
            volume += step * outlines.area;
        }
        EXPECT_NEAR(volume, meshVolume(mesh), precision * std::fabs(meshVolume(mesh)));
    }
}

} // namespace

TEST(PlaneSegments, OfClosedSurfacesRunRoundTheirVolume)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 4);
    expectWhole(mesh, 1e-3);
    znTest::makeTorus(mesh, 40, 24);
    expectWhole(mesh, 1e-3);

    // Through vertices, along edges and along faces: those on a plane count as above it.
    znTest::makeCube(mesh);
    const auto sections = meshPlaneSegments(mesh, axes[2], {-2, -1, 0, 1, 1.5});
    for (const auto& [place, segments, area] :
         {std::tuple(0, 0, 0.0), {1, 0, 0.0}, {2, 8, 4.0}, {3, 4, 4.0}, {4, 0, 0.0}}) {
        EXPECT_EQ(sections[place].size(), static_cast<std::size_t>(segments));
        const Outlines outlines(sections[place], 2);
        EXPECT_EQ(outlines.area, area);
        EXPECT_TRUE(outlines.numOpen == 0 && outlines.numClosed == (segments > 0 ? 1 : 0));
    }
}

TEST(PlaneSegments, KeepToBoundariesAndCancelWhatCoincides)
{
    CompactMesh mesh = znTest::makeGrid(6, 6);
    const Outlines open(meshPlaneSegments(mesh, axes[0], {2.5})[0], 0);
    EXPECT_TRUE(open.numOpen == 1 && open.numClosed == 0);
    mesh.getVertices()[14].z = std::nanf("");
    EXPECT_EQ(Outlines(meshPlaneSegments(mesh, axes[1], {2.5})[0], 1).numOpen, 2);
    EXPECT_EQ(meshPlaneSegments(mesh, axes[1], {}).size(), 0);

    // The cube with one face doubled, the copy facing inward: nothing is left of both but the hole between them.
    znTest::makeCube(mesh);
    const std::size_t whole = meshPlaneSegments(mesh, axes[2], {0.25})[0].size();
    std::vector<znGeom::MeshTriangle> copies;
    for (int t = 0; t < 12; ++t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        const auto x = [&](int v) { return mesh.getVertices()[v].x; };
        if (x(a) == 1 && x(b) == 1 && x(c) == 1) copies.push_back({a, c, b});
    }
    ASSERT_EQ(copies.size(), 2U);
    mesh.resizeTriangleArray(14);
    std::copy(copies.begin(), copies.end(), mesh.getTriangles() + 12);
    EXPECT_EQ(meshPlaneSegments(mesh, axes[2], {0.25})[0].size(), whole - 2);
}

TEST(PlaneSegments, OfRealMeshesWithoutBoundaryAreClosed)
{
    const bool found = znTest::forEachSharedMesh(100000, [](const CompactMesh& mesh) {
        if (isClosed(mesh)) expectWhole(mesh, 2e-3);
    });
    if (!found) GTEST_SKIP() << "there is no folder of real meshes";
}
