#include "znGeom/repair/hole_fill.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/support/defects.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/same_bits.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/support/tangles.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/cache/mesh_cache.h"

using namespace znGeom;
using znLinear::Point;
using znTest::countDefects;
using znTest::Random;
using znUtil::Progress;

namespace {

constexpr HoleQuality qualities[] = {HoleTriangulated, HoleRefined, HoleFaired};

/// Fills all loops up to a length.
int fillAll(CompactMesh& mesh, HoleQuality quality, Progress& progress, zn::vector<HoleOutcome>* outcomes = nullptr,
            int longest = 1000)
{
    SimpleMeshCache cache;
    const zn::Reference<MeshAdjTris> adjTris = cache.getAdjTris(mesh);
    const zn::Reference<MeshAdjVertices> adjVertices = cache.getAdjVertices(mesh);
    const zn::Reference<MeshBoundaries> boundaries = cache.getBoundaries(mesh);
    zn::list<int> holes;
    for (int i = 0; i < boundaries->size(); ++i)
        if (boundaries->getLength(i) <= longest) holes.append(i);
    return meshHoleFill(mesh, *adjTris, *adjVertices, *boundaries, holes, quality, progress, outcomes);
}

/// Without the triangles of which a corner lies above a height.
CompactMesh cutAbove(const CompactMesh& mesh, float height)
{
    CompactMesh cut(mesh);
    int kept = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const MeshTriangle& triangle = mesh.getTriangles()[t];
        bool isBelow = true;
        for (const int corner : triangle.corners) isBelow = isBelow && mesh.getVertices()[corner].z <= height;
        if (isBelow) cut.getTriangles()[kept++] = triangle;
    }
    cut.resizeTriangleArray(kept);
    return cut;
}

TEST(MeshHoleFill, ClosesWhatWasCutOffTheWayRound)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 4);
    const CompactMesh open = cutAbove(sphere, 0.7f);
    double farthestOff[3] = {};
    for (const HoleQuality quality : qualities) {
        CompactMesh mesh(open);
        Progress progress;
        std::string caption;
        progress.setObserver([&caption](double, const char* text) { caption = text; });
        znTest::ChangeRecorder changes(mesh);
        zn::vector<HoleOutcome> outcomes;
        EXPECT_EQ(fillAll(mesh, quality, progress, &outcomes), 1);
        EXPECT_EQ(outcomes.size(), 1);
        EXPECT_EQ(outcomes[0], HoleOutcome::Filled);
        EXPECT_EQ(caption, "Filling hole 1 of 1");
        EXPECT_EQ(progress.get(), 1.0);
        EXPECT_EQ(changes.changes().size(), 1u);
        EXPECT_TRUE(znTest::countEdges(mesh).isClosed());
        EXPECT_EQ(countDefects(mesh).count(), 0);
        for (int v = 0; v < mesh.getNumVertices(); ++v) {
            const double off = std::fabs(distance(mesh.getVertices()[v].asPoint(), Point()) - 1);
            farthestOff[quality] = std::max(farthestOff[quality], off);
        }
    }
    EXPECT_LT(farthestOff[HoleFaired], farthestOff[HoleRefined] / 2) << "it continues the curve";
}

TEST(MeshHoleFill, MatchesTheTrianglesAround)
{
    CompactMesh mesh = znTest::makeMesh(4, {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}});
    Progress progress;
    EXPECT_EQ(fillAll(mesh, HoleTriangulated, progress), 1);
    EXPECT_EQ(mesh.getNumTriangles(), 4);
    EXPECT_TRUE(znTest::countEdges(mesh).isClosed());
    EXPECT_EQ(countDefects(mesh).count(), 0);

    CompactMesh grid = znTest::makeGrid(40, 40);
    const int numBefore = grid.getNumTriangles();
    CompactMesh open(grid);
    int kept = 0;
    for (int t = 0; t < numBefore; ++t) {
        const MeshVertex& v = grid.getVertices()[grid.getTriangles()[t][0]];
        if (v.x < 8 || v.x > 28 || v.y < 8 || v.y > 28) open.getTriangles()[kept++] = grid.getTriangles()[t];
    }
    open.resizeTriangleArray(kept);
    EXPECT_EQ(fillAll(open, HoleFaired, progress, nullptr, 100), 1);
    EXPECT_EQ(countDefects(open).count(), 0);
    EXPECT_NEAR(open.getNumTriangles(), numBefore, numBefore / 5);
    for (int v = 0; v < open.getNumVertices(); ++v) EXPECT_EQ(open.getVertices()[v].z, 0);
}

TEST(MeshHoleFill, DoesTheSameInEveryUnit)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 3);
    const CompactMesh open = cutAbove(sphere, 0.6f);
    CompactMesh expected(open);
    Progress progress;
    fillAll(expected, HoleFaired, progress);
    for (const float scale : {0x1p-20f, 0x1p20f}) {
        CompactMesh mesh(open);
        for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) mesh.getVerticesRaw()[i] *= scale;
        fillAll(mesh, HoleFaired, progress);
        for (int i = 0; i < 3 * mesh.getNumVertices(); ++i) mesh.getVerticesRaw()[i] /= scale;
        EXPECT_TRUE(znTest::sameBits(mesh, expected)) << scale;
    }
}

TEST(MeshHoleFill, TakesSpikesOffTheRim)
{
    // A ring around a square hole; on one side of the hole stands a triangle whose tip lies on the opposite corner.
    CompactMesh mesh = znTest::makeGrid(4, 4);
    int kept = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        const int lowest = std::min({a, b, c});
        if (lowest != 5) mesh.getTriangles()[kept++] = mesh.getTriangles()[t];
    }
    mesh.resizeTriangleArray(kept);
    const int numRing = kept, tip = 16;
    mesh.resizeVertexArray(17);
    mesh.getVertices()[tip] = mesh.getVertices()[10];
    mesh.resizeTriangleArray(numRing + 1);
    mesh.getTriangles()[numRing] = MeshTriangle{{5, 6, tip}};
    Progress progress;
    zn::vector<HoleOutcome> outcomes;
    EXPECT_EQ(fillAll(mesh, HoleTriangulated, progress, &outcomes, 8), 1);
    EXPECT_EQ(mesh.getNumTriangles(), numRing + 2);
    EXPECT_EQ(mesh.getNumVertices(), 16);
    EXPECT_EQ(znTest::countEdges(mesh).boundary, 12);
    EXPECT_EQ(countDefects(mesh).count(), 0);
}

TEST(MeshHoleFill, SaysWhatStaysOpen)
{
    CompactMesh mesh = znTest::makeGrid(3, 3);
    SimpleMeshCache cache;
    const zn::Reference<MeshAdjTris> adjTris = cache.getAdjTris(mesh);
    const zn::Reference<MeshAdjVertices> adjVertices = cache.getAdjVertices(mesh);
    const zn::Reference<MeshBoundaries> boundaries = cache.getBoundaries(mesh);
    const CompactMesh before(mesh);
    Progress progress;
    zn::vector<HoleOutcome> outcomes;
    zn::list<int> holes;
    EXPECT_EQ(meshHoleFill(mesh, *adjTris, *adjVertices, *boundaries, holes, HoleFaired, progress), 0);
    holes.append(-1), holes.append(7);
    EXPECT_EQ(meshHoleFill(mesh, *adjTris, *adjVertices, *boundaries, holes, HoleFaired, progress, &outcomes), 0);
    EXPECT_EQ(outcomes.size(), 2);
    EXPECT_EQ(outcomes[1], HoleOutcome::NoLoop);
    EXPECT_TRUE(znTest::sameBits(mesh, before));

    // A loop through a vertex at which two fans touch is cut there, and its ends don't meet.
    CompactMesh bowTie = znTest::makeMesh(5, {{0, 1, 2}, {0, 3, 4}});
    fillAll(bowTie, HoleFaired, progress, &outcomes);
    for (const HoleOutcome outcome : outcomes) EXPECT_NE(outcome, HoleOutcome::GivenUp);
    EXPECT_EQ(countDefects(bowTie).badEdges, 0);
}

TEST(MeshHoleFill, ACancelLeavesEveryBit)
{
    CompactMesh sphere;
    znTest::makeSphere(sphere, 4);
    CompactMesh open = cutAbove(sphere, 0.7f);
    for (float* z = open.getVerticesRaw() + 2; z < open.getVerticesRaw() + 3 * open.getNumVertices(); z += 3) *z = -*z;
    open = cutAbove(open, 0.8f);
    for (const double at : {-1.0, 0.001, 0.005, 0.01}) {
        CompactMesh mesh(open);
        Progress progress;
        if (at < 0) progress.cancel();
        progress.setObserver([&](double fraction, const char*) {
            if (fraction >= at) progress.cancel();
        });
        zn::vector<HoleOutcome> outcomes;
        EXPECT_EQ(fillAll(mesh, HoleFaired, progress, &outcomes), 0);
        EXPECT_EQ(outcomes.size(), 2);
        EXPECT_EQ(outcomes[0], HoleOutcome::GivenUp);
        EXPECT_TRUE(znTest::sameBits(mesh, open)) << at;
    }
    // At any report, the last one of all too.
    const auto fillUntil = [&open](int report, CompactMesh& mesh) {
        int numReports = 0;
        Progress progress;
        progress.setObserver([&](double, const char*) {
            if (++numReports == report) progress.cancel();
        });
        mesh = open;
        const int numFilled = fillAll(mesh, HoleFaired, progress);
        EXPECT_EQ(numFilled, numReports >= report ? 0 : 2) << report;
        return numReports;
    };
    CompactMesh mesh;
    const int numReports = fillUntil(1 << 30, mesh);
    EXPECT_FALSE(znTest::sameBits(mesh, open));
    for (int report = 1; report <= numReports; report += std::max((numReports - report) / 8, 1)) {
        fillUntil(report, mesh);
        EXPECT_TRUE(znTest::sameBits(mesh, open)) << report << " of " << numReports;
    }
}

TEST(MeshHoleFill, MakesNothingWorse)
{
    for (std::uint64_t seed = 0; seed < 24; ++seed) {
        Random random(seed);
        CompactMesh mesh;
        if (seed % 3 == 0)
            znTest::makeNoisyScan(mesh, 12, 10, seed + 1);
        else
            mesh = znTest::makeAnyMesh(random, int(seed));
        if (seed % 11 == 10 && mesh.getNumVertices() > 0) mesh.getVertices()[0].y = NAN;
        const int before = countDefects(mesh).badEdges, openBefore = znTest::countEdges(mesh).boundary;
        CompactMesh again(mesh);
        Progress progress;
        const int numFilled = fillAll(mesh, qualities[seed % 3], progress);
        EXPECT_EQ(fillAll(again, qualities[seed % 3], progress), numFilled) << seed;
        EXPECT_TRUE(znTest::sameBits(mesh, again)) << seed;
        EXPECT_LE(countDefects(mesh).badEdges, before) << seed;
        EXPECT_LE(znTest::countEdges(mesh).boundary, openBefore) << seed;
        EXPECT_TRUE(numFilled == 0 || znTest::countEdges(mesh).boundary < openBefore) << seed;
    }
}

/// All loops of meshes from elsewhere, in all qualities.
void fillInAllQualities(const CompactMesh& open)
{
    const znTest::Defects before = countDefects(open);
    const MeshEdgeCensus edgesBefore = znTest::countEdges(open);
    for (const HoleQuality quality : qualities) {
        CompactMesh mesh(open), again(open);
        Progress progress;
        zn::vector<HoleOutcome> outcomes;
        const int numFilled = fillAll(mesh, quality, progress, &outcomes);
        EXPECT_EQ(numFilled, std::count(outcomes.begin(), outcomes.end(), HoleOutcome::Filled));
        EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), HoleOutcome::GivenUp), 0);
        EXPECT_TRUE(numFilled < outcomes.size() || znTest::countEdges(mesh).boundary == 0);
        EXPECT_TRUE(numFilled == outcomes.size() || edgesBefore.nonManifold > 0 || before.badVertices > 0);
        EXPECT_LE(countDefects(mesh).count(), before.count());
        fillAll(again, quality, progress);
        EXPECT_TRUE(znTest::sameBits(mesh, again));
        EXPECT_EQ(fillAll(again, quality, progress), 0);
        EXPECT_TRUE(znTest::sameBits(mesh, again)) << "there is nothing left to be done";
    }
}

TEST(MeshHoleFill, ClosesRealMeshesOrSaysWhyNot)
{
    if (!znTest::forEachSharedMesh(25000, fillInAllQualities)) GTEST_SKIP() << "there is no folder of real meshes";
}

} // namespace
