#include "znGeom/spatial/queries/deviation.h"

#include <cstring>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"
#include "tests/support/timed_lines.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/queries/point_inside.h"
#include "znGeom/spatial/trees/octree_partition.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

struct Target
{
    CompactMesh mesh;
    zn::Reference<Octree> octree;
    OctreeTris tris;

    explicit Target(const CompactMesh& source) : mesh(source), octree(znTest::makeOctree(mesh, 16))
    {
        computeOctreeTris(mesh, *octree, tris);
    }
};

struct Measured
{
    bool selectedOnly = false, reverseSign = false;
    int numThreads = 2;

    std::vector<float> operator()(const Target& target, const AffineMatrix& targetMatrix, const CompactMesh& source,
                                  const AffineMatrix& sourceMatrix) const
    {
        znUtil::Progress progress;
        znUtil::ThreadPool pool(numThreads);
        MeshDeviation deviation(target.mesh, targetMatrix, *target.octree, target.tris, progress);
        std::vector<float> result(size_t(source.getNumVertices()), 77.0f);
        deviation.calculate(&source, sourceMatrix, result.data(), selectedOnly, reverseSign, pool);
        return result;
    }
};

CompactMesh makeBlob(Random& random)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 3);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const Point at = mesh.getVertices()[v].asPoint() + random.vector(0.03);
        mesh.getVertices()[v].set(&at.x);
    }
    meshComputeNormals(mesh);
    return mesh;
}

AffineMatrix makeMatrix(Random& random)
{
    AffineMatrix matrix;
    matrix.rotate(random.direction(), random.direction());
    const double scale = random.real(0.5, 2);
    for (int row = 0; row < 3; ++row) matrix.setRow(row, matrix.row(row) * scale);
    matrix.setRow(3, random.vector(0.3));
    return matrix;
}

/// By all triangles of the target, moved to the world.
double plainDeviation(const CompactMesh& target, const AffineMatrix& targetMatrix, const CompactMesh& source,
                      const AffineMatrix& sourceMatrix, int vertex)
{
    const Point point = source.getVertices()[vertex].asPoint() * sourceMatrix;
    double best = HUGE_VAL;
    Vector way;
    for (int t = 0; t < target.getNumTriangles(); ++t) {
        Point corners[3];
        for (int i = 0; i < 3; ++i)
            corners[i] = target.getVertices()[target.getTriangles()[t][i]].asPoint() * targetMatrix;
        MeshCoordBase coord;
        if (!coord.projectBase(corners[0], corners[1], corners[2], point)) continue;
        const Vector candidate = point - coord.evaluateBase(corners);
        if (candidate.length() < best) best = candidate.length(), way = candidate;
    }
    bool regular;
    const Vector normal = source.getNormals()[vertex].asVector() * sourceMatrix.normalMatrix(regular);
    return dot(way, normal) < 0 ? -best : best;
}

} // namespace

TEST(Deviation, IsTheSignedDistanceInTheWorld)
{
    Random random(1);
    int numBehind = 0;
    for (int round = 0; round < 5; ++round) {
        const Target target(makeBlob(random));
        const CompactMesh source = makeBlob(random);
        const AffineMatrix targetMatrix = makeMatrix(random), sourceMatrix = makeMatrix(random);
        const std::vector<float> found = Measured()(target, targetMatrix, source, sourceMatrix);
        const std::vector<float> reversed = Measured{false, true}(target, targetMatrix, source, sourceMatrix);
        for (int v = 0; v < source.getNumVertices(); ++v) {
            const double expected = plainDeviation(target.mesh, targetMatrix, source, sourceMatrix, v);
            ASSERT_NEAR(found[size_t(v)], expected, 1e-6) << v;
            ASSERT_EQ(reversed[size_t(v)], -found[size_t(v)]);
            numBehind += expected < 0;
        }
        for (const float d : Measured()(target, sourceMatrix, target.mesh, sourceMatrix)) EXPECT_NEAR(d, 0, 1e-6);
        for (const float d : Measured()(target, {}, target.mesh, {})) EXPECT_EQ(d, 0);
    }
    EXPECT_TRUE(numBehind > 100 && numBehind < 4 * 258);
}

TEST(Deviation, LeavesOutWhatIsNotSelectedAndKnowsNoSignWithoutNormals)
{
    const Target plane(znTest::makeGrid(5, 5));
    CompactMesh above = plane.mesh;
    AffineMatrix up, twice(2);
    up[3][2] = 1;
    meshComputeNormals(above);
    above.getSelectedVertices().resize(20);
    EXPECT_EQ(Measured{true}(plane, {}, above, up), std::vector<float>(25, MeshDeviation::notMeasured));
    above.getSelectedVertices().setBit(3);
    std::vector<float> expected(25, MeshDeviation::notMeasured);
    expected[3] = -1;
    EXPECT_EQ((Measured{true, true}(plane, {}, above, up)), expected);
    above.getSelectedVertices().resize(0);
    EXPECT_EQ(Measured{true}(plane, {}, above, up), std::vector<float>(25, 1.0f));
    // A placement of both that doubles doubles distances as well.
    EXPECT_EQ(Measured()(plane, twice, above, up * twice), std::vector<float>(25, 2.0f));
    up[3][2] = -1;
    EXPECT_EQ(Measured()(plane, {}, above, up), std::vector<float>(25, -1.0f));
    above.deleteNormals();
    EXPECT_EQ(Measured()(plane, {}, above, up), std::vector<float>(25, 1.0f));
    EXPECT_EQ((Measured{false, true}(Target(CompactMesh()), {}, above, up)), std::vector<float>(25, HUGE_VALF));
}

TEST(Deviation, HasTheSameBitsOnAnyNumberOfThreadsAndStopsWithinTwoHundred)
{
    Random random(2);
    const Target target(makeBlob(random));
    const CompactMesh grid = znTest::makeGrid(60, 40);
    const std::vector<float> once = Measured{false, false, 1}(target, {}, grid, {});
    for (const int numThreads : {2, 7}) {
        const std::vector<float> again = Measured{false, false, numThreads}(target, {}, grid, {});
        EXPECT_EQ(std::memcmp(once.data(), again.data(), once.size() * sizeof(float)), 0);
    }

    // In the middle on one thread; before the first vertex on three.
    for (const int numThreads : {1, 3}) {
        znUtil::ThreadPool pool(numThreads);
        znUtil::Progress progress;
        MeshDeviation deviation(target.mesh, {}, *target.octree, target.tris, progress);
        std::vector<float> result(2400, 77.0f);
        double reached = 0;
        progress.setObserver([&](double fraction, const char*) {
            reached = fraction;
            if (fraction > 0.3) progress.cancel();
        });
        if (numThreads > 1) progress.cancel();
        const znTest::LogRecorder log;
        deviation.calculate(&grid, {}, result.data(), false, false, pool);
        EXPECT_TRUE(progress.cancelled());
        EXPECT_LT(reached, 0.5);
        EXPECT_EQ(result[2399], 77);
        int numWritten = 0;
        for (size_t i = 0; i < result.size(); ++i) {
            if (result[i] == 77) continue;
            EXPECT_EQ(result[i], once[i]);
            ++numWritten;
        }
        EXPECT_EQ(numWritten, numThreads > 1 ? 0 : 1000);
        EXPECT_EQ(log.count("   meshDeviation thread time: "), numThreads);
        EXPECT_EQ(znTest::withoutTimes(log).back(), "   meshDeviation: # s\n");
        // The same object measures again.
        progress.setObserver(nullptr);
        progress.reset();
        deviation.calculate(&grid, {}, result.data(), false, false, pool);
        EXPECT_EQ(result, once);
        EXPECT_EQ(progress.get(), 1);
    }
}

TEST(PointInside, GoesByTheNormalAtTheNearestPlace)
{
    CompactMesh torus;
    znTest::makeTorus(torus, 60, 40, 1, 0.4);
    meshComputeNormals(torus);
    const Target on(torus);
    const TriangleTree tree(on.mesh);
    MeshPtInside inside(on.mesh, *on.octree, on.tris, 0.05), byTree(on.mesh, *on.octree, on.tris, tree, 0.05);
    MeshPtInside copy(inside);
    Random random(4);
    int counts[3] = {};
    for (int round = 0; round < 5000; ++round) {
        const Point point = random.point(1.5);
        const double depth = 0.4 - std::hypot(std::hypot(point.x, point.y) - 1, point.z);
        const MeshPtInside::Result result = inside.evaluate(point);
        EXPECT_EQ(byTree.evaluate(point), result);
        EXPECT_EQ(copy.evaluate(point), result);
        ++counts[result];
        if (std::fabs(std::fabs(depth) - 0.05) < 0.005) continue;
        const bool inBox = std::fabs(point.x) <= 1.4 && std::fabs(point.y) <= 1.4 && std::fabs(point.z) <= 0.4;
        if (std::fabs(point.z) > 0.39 && std::fabs(point.z) < 0.41) continue;
        EXPECT_EQ(result, depth < -0.05 || !inBox ? MeshPtInside::Outside
                          : depth < 0.05          ? MeshPtInside::OnSurface
                                                  : MeshPtInside::Inside)
            << point.x << " " << point.y << " " << point.z;
    }
    EXPECT_TRUE(counts[0] > 100 && counts[1] > 100 && counts[2] > 100);
}

TEST(PointInside, KnowsItsLimits)
{
    CompactMesh cube;
    znTest::makeCube(cube);
    const Target on(cube);
    // Exactly the tolerance away is not on the surface; beyond the box is outside, however near.
    MeshPtInside quarter(on.mesh, *on.octree, on.tris, 0.25);
    EXPECT_EQ(quarter.evaluate({0.75, 0, 0}), MeshPtInside::Inside);
    EXPECT_EQ(quarter.evaluate({0.76, 0, 0}), MeshPtInside::OnSurface);
    EXPECT_EQ(quarter.evaluate({1.01, 0, 0}), MeshPtInside::Outside);
    EXPECT_EQ(quarter.evaluate({std::nan(""), 0, 0}), MeshPtInside::Outside);
    // Normals that vanish decide for the inside.
    CompactMesh flat = cube;
    flat.allocNormalArray();
    const Target onFlat(flat), onNone{CompactMesh()};
    EXPECT_EQ(MeshPtInside(onFlat.mesh, *onFlat.octree, onFlat.tris, 0.1).evaluate({0, 0, 0}), MeshPtInside::Inside);
    EXPECT_EQ(MeshPtInside(onNone.mesh, *onNone.octree, onNone.tris, 0.1).evaluate({0, 0, 0}), MeshPtInside::Outside);
}
