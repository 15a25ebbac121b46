#include "znGeom/simplify/reduce.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "tests/support/defects.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/components.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree_partition.h"

using namespace znGeom;
using znLinear::Point;
using znTest::countDefects;
using znTest::Random;
using znUtil::Progress;

namespace {

using Places = std::multiset<std::array<double, 3>>;

Places placesOf(const CompactMesh& mesh)
{
    Places places;
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const Point p = mesh.getVertices()[v].asPoint();
        places.insert({p.x, p.y, p.z});
    }
    return places;
}

/// Bumps of a size, in every direction.
void addBumps(CompactMesh& mesh, double size, std::uint64_t seed = 5)
{
    Random random(seed);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const Point moved = mesh.getVertices()[v].asPoint() + random.vector(size);
        mesh.getVertices()[v].set(&moved.x);
    }
}

int eulerNumber(const CompactMesh& mesh)
{
    return mesh.getNumVertices() - znTest::countEdges(mesh).edges + mesh.getNumTriangles();
}

double distanceTo(const CompactMesh& mesh, const Point& point)
{
    double nearest = std::numeric_limits<double>::max();
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        MeshCoord coord;
        coord.project(t, mesh.getVerticesRaw(), mesh.getTrianglesRaw(), point);
        nearest = std::min(nearest, distance(point, coord.evaluate(mesh.getVertices(), mesh.getTriangles())));
    }
    return nearest;
}

TEST(MeshReduce, KeepsAClosedSurfaceClosedAndItsVerticesInTheirPlaces)
{
    CompactMesh shapes[2];
    znTest::makeSphere(shapes[0], 4);
    znTest::makeTorus(shapes[1], 50, 30);
    for (CompactMesh& mesh : shapes) {
        addBumps(mesh, 0.002);
        mesh.allocNormalArray();
        const CompactMesh before(mesh);
        const Places places = placesOf(mesh);
        const int euler = eulerNumber(mesh), target = mesh.getNumVertices() * 3 / 10;
        znTest::LogRecorder log;
        Progress progress;
        zn::vector<Point> removed(1);
        meshReduceToFraction(mesh, 0.3, progress, removed);
        const std::string lastLine = znTest::withoutTimes(log).back();
        EXPECT_NEAR(mesh.getNumVertices(), target, target / 20);
        EXPECT_GE(mesh.getNumVertices(), target);
        EXPECT_EQ(countDefects(mesh).count(), 0);
        EXPECT_TRUE(znTest::countEdges(mesh).isClosed());
        EXPECT_EQ(eulerNumber(mesh), euler);
        EXPECT_EQ(mesh.getSelectedTriangles().getNumSetBits() + mesh.getSelectedVertices().getNumSetBits(), 0);
        Places all = placesOf(mesh);
        for (int i = 1; i < removed.size(); ++i) all.insert({removed[i].x, removed[i].y, removed[i].z});
        EXPECT_TRUE(std::includes(all.begin(), all.end(), places.begin(), places.end()));
        EXPECT_EQ(lastLine, "MeshReduce: reduced from " + std::to_string(before.getNumVertices()) + " vertices to " +
                                std::to_string(mesh.getNumVertices()) + " vertices: # s\n");
    }
}

TEST(MeshReduce, KeepsBoundariesAndWhatIsNotManifold)
{
    CompactMesh mesh;
    znTest::makeNoisyScan(mesh, 30, 25);
    const Places before = placesOf(mesh);
    const MeshEdgeCensus edges = znTest::countEdges(mesh);
    Progress progress;
    zn::vector<Point> removed;
    meshReduceToFraction(mesh, 0.0, progress, removed);
    EXPECT_GT(removed.size(), 100);
    EXPECT_EQ(znTest::countEdges(mesh).boundary, edges.boundary);
    EXPECT_EQ(znTest::countEdges(mesh).boundaryVertices, edges.boundaryVertices);
    for (const auto& place : placesOf(mesh)) EXPECT_TRUE(before.count(place));

    // Every vertex of a regular grid lies between two others.
    CompactMesh flat = znTest::makeGrid(30, 30);
    removed.clear();
    meshReduceToFraction(flat, 0.0, progress, removed);
    EXPECT_EQ(znTest::countEdges(flat).boundary, 116);
    EXPECT_LT(flat.getNumVertices(), 140);
    EXPECT_EQ(countDefects(flat).count(), 0);
    for (int v = 0; v < flat.getNumVertices(); ++v) EXPECT_EQ(flat.getVertices()[v].z, 0);
}

TEST(MeshReduce, EndsAtATetrahedron)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 3);
    Progress progress;
    zn::vector<Point> removed;
    for (int round = 0; round < 3; ++round) meshReduceToFraction(mesh, 0.0, progress, removed);
    EXPECT_EQ(mesh.getNumVertices(), 4);
    EXPECT_EQ(countDefects(mesh).count(), 0);
    EXPECT_TRUE(znTest::countEdges(mesh).isClosed());
}

TEST(MeshReduce, HoldsTheTolerance)
{
    for (const double tolerance : {0.03, 0.1}) {
        CompactMesh mesh;
        znTest::makeTorus(mesh, 30, 20);
        addBumps(mesh, 0.002);
        const int numBefore = mesh.getNumVertices();
        Progress progress;
        double last = 0;
        progress.setObserver([&last](double fraction, const char*) { last = std::max(last, fraction); });
        znTest::LogRecorder log;
        zn::vector<Point> removed;
        const double deviation = meshReduceWithTolerance(mesh, tolerance, progress, removed);
        EXPECT_EQ(log.count("meshReduce: iterations("), 1);
        EXPECT_LT(mesh.getNumVertices(), tolerance > 0.05 ? numBefore / 2 : numBefore);
        EXPECT_EQ(countDefects(mesh).count(), 0);
        EXPECT_TRUE(znTest::countEdges(mesh).isClosed());
        EXPECT_EQ(last, 1.0);
        double farthest = 0;
        for (const Point& point : removed) farthest = std::max(farthest, distanceTo(mesh, point));
        EXPECT_LE(farthest, tolerance);
        EXPECT_GE(deviation, farthest - 1e-12);
        EXPECT_LE(deviation, tolerance * (1 + 1e-12));
    }
}

TEST(MeshReduce, DoesNothingWhereNothingIsAskedFor)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 3);
    const Places before = placesOf(mesh);
    Progress progress;
    zn::vector<Point> removed;
    znTest::LogRecorder log;
    for (const double fraction : {1.0, 2.0, HUGE_VAL, std::numeric_limits<double>::quiet_NaN()})
        meshReduceToFraction(mesh, fraction, progress, removed);
    const std::string number = std::to_string(mesh.getNumVertices());
    EXPECT_EQ(log.count("MeshReduce: reduced from " + number + " vertices to " + number + " vertices: "), 4);
    for (const double tolerance : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(meshReduceWithTolerance(mesh, tolerance, progress, removed), 0);
    CompactMesh empty, triangle = znTest::makeMesh(3, {{0, 1, 2}});
    for (CompactMesh* small : {&empty, &triangle}) {
        meshReduceToFraction(*small, 0.1, progress, removed);
        EXPECT_EQ(meshReduceWithTolerance(*small, 1.0, progress, removed), 0);
    }
    EXPECT_EQ(triangle.getNumVertices(), 3);
    EXPECT_TRUE(removed.empty());
    EXPECT_EQ(placesOf(mesh), before);
}

TEST(MeshReduce, ACancelLeavesAWholeMesh)
{
    CompactMesh original;
    znTest::makeSphere(original, 5);
    addBumps(original, 0.001);
    for (const double cancelAt : {-1.0, 0.02, 0.3})
        for (const bool within : {false, true}) {
            CompactMesh mesh(original);
            Progress progress;
            if (cancelAt < 0) progress.cancel();
            progress.setObserver([&](double fraction, const char*) {
                if (fraction >= cancelAt) progress.cancel();
            });
            zn::vector<Point> removed;
            if (within)
                meshReduceWithTolerance(mesh, 0.01, progress, removed);
            else
                meshReduceToFraction(mesh, 0.05, progress, removed);
            EXPECT_EQ(countDefects(mesh).count(), 0);
            EXPECT_TRUE(znTest::countEdges(mesh).isClosed());
            EXPECT_GE(removed.size(), original.getNumVertices() - mesh.getNumVertices());
            EXPECT_GT(mesh.getNumVertices(), original.getNumVertices() / 20);
        }
}

/// What a reduction must not change.
struct Topology
{
    int euler, components, boundary;
    bool isOriented;

    explicit Topology(const CompactMesh& mesh)
    {
        const MeshEdgeCensus edges = znTest::countEdges(mesh);
        MeshAdjTris adjTris;
        meshAdjTris(mesh, adjTris);
        components = meshComponents(mesh, adjTris, nullptr);
        euler = eulerNumber(mesh);
        boundary = edges.boundary;
        isOriented = edges.isConsistentlyWound();
    }
    bool operator==(const Topology&) const = default;
};

double farthestFrom(const CompactMesh& mesh, const zn::vector<Point>& points)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    const Octree octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 16);
    OctreeTris triangles;
    computeOctreeTris(mesh, octree, triangles);
    MeshClosestPoint closest(mesh, octree, triangles);
    zn::vector<double> distances(points.size());
    closest.compute(points.data(), points.size(), nullptr, distances.data());
    return distances.empty() ? 0 : *std::max_element(distances.begin(), distances.end());
}

TEST(MeshReduce, KeepsRealMeshesWholeAndWithinTheTolerance)
{
    const auto reduceInThreeWays = [](const CompactMesh& original) {
        const Topology before(original);
        const int numDefects = countDefects(original).count();
        BoundingBox box;
        meshBoundingBox(original, box);
        const double tolerance = 1e-3 * double(box.diagonalLength());
        for (const double fraction : {0.5, 0.1, -1.0}) {
            CompactMesh mesh(original);
            Progress progress;
            zn::vector<Point> removed;
            if (fraction > 0)
                meshReduceToFraction(mesh, fraction, progress, removed);
            else
                meshReduceWithTolerance(mesh, tolerance, progress, removed);
            EXPECT_EQ(Topology(mesh), before) << fraction;
            EXPECT_LE(countDefects(mesh).count(), numDefects) << fraction;
            EXPECT_LE(farthestFrom(mesh, removed), fraction < 0 ? tolerance * (1 + 1e-6) : HUGE_VAL);
        }
    };
    if (!znTest::forEachSharedMesh(60000, reduceInThreeWays)) GTEST_SKIP() << "there is no folder of real meshes";
}

TEST(MeshReduce, EndsOnAnyMesh)
{
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        Random random(seed);
        CompactMesh mesh = znTest::makeAnyMesh(random, int(seed)), other(mesh);
        if (seed % 7 == 0 && mesh.getNumVertices() > 0) mesh.getVertices()[0].x = NAN;
        Progress progress;
        zn::vector<Point> removed;
        const int numBefore = mesh.getNumVertices();
        meshReduceToFraction(mesh, random.real(-0.5, 0.9), progress, removed);
        meshReduceWithTolerance(other, random.real(0, 3), progress, removed);
        EXPECT_LE(std::max(mesh.getNumVertices(), other.getNumVertices()), numBefore);
    }
}

} // namespace
