#include "znGeom/parameterize/cut_surface.h"

#include <cstring>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/parameterize/charts.h"
#include "tests/support/recorder.h"
#include "tests/support/same_bits.h"
#include "tests/support/tangles.h"
#include "znGeom/analysis/path_length.h"

using namespace znGeom;
using znTest::Topology;

namespace {

/// Cuts and checks what holds of every cut. \return the number of copies; -1 where there was none to be had
int cut(CompactMesh& mesh)
{
    const CompactMesh before(mesh);
    zn::vector<int> originals;
    znUtil::Progress progress;
    if (!cutSurface::makeDisk(mesh, originals, progress)) {
        EXPECT_TRUE(znTest::sameBits(mesh, before));
        return -1;
    }
    EXPECT_EQ(progress.get(), 1);
    const int numOld = before.getNumVertices();
    EXPECT_EQ(mesh.getNumVertices(), numOld + originals.size());
    zn::vector<int> lowest(mesh.getNumVertices(), -1);
    for (int corner = 0; corner < 3 * mesh.getNumTriangles(); ++corner) {
        const int vertex = mesh.getTrianglesRaw()[corner], old = before.getTrianglesRaw()[corner];
        EXPECT_EQ(vertex < numOld ? vertex : originals[vertex - numOld], old);
        if (lowest[vertex] < 0) lowest[vertex] = corner;
    }
    for (int i = 0; i < originals.size(); ++i) {
        EXPECT_LT(lowest[originals[i]], lowest[numOld + i]);
        EXPECT_TRUE(i == 0 || lowest[numOld + i - 1] < lowest[numOld + i]);
        EXPECT_EQ(std::memcmp(mesh.getVertices() + numOld + i, mesh.getVertices() + originals[i], 12), 0);
    }
    CompactMesh again(before);
    EXPECT_TRUE(cutSurface::makeDisk(again));
    EXPECT_TRUE(znTest::sameBits(mesh, again));
    return originals.size();
}

double seamLength(const CompactMesh& mesh)
{
    const MeshAdjTris adjTris = znTest::adjTrisOf(mesh);
    MeshAdjVertices adjVertices;
    MeshBoundaries loops;
    meshAdjVertices(mesh, adjTris, adjVertices);
    meshComputeBoundary(mesh, adjTris, adjVertices, loops);
    return meshPathLength(mesh, {loops.getStart(0), loops.getEnd(0)}, true) / 2;
}

} // namespace

TEST(MakeDisk, CutsWhatIsClosedAndWhatHasHandles)
{
    CompactMesh tetrahedron = znTest::makeMesh(4, {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}});
    EXPECT_GT(cut(tetrahedron), 0) << "without lengths, and with three edges at most from anywhere";
    EXPECT_TRUE(Topology(tetrahedron).isDisks());

    CompactMesh mesh;
    znTest::makeCube(mesh);
    EXPECT_GT(cut(mesh), 0);
    EXPECT_TRUE(Topology(mesh).isDisks());
    znTest::makeSphere(mesh, 4);
    EXPECT_GT(cut(mesh), 0);
    EXPECT_TRUE(Topology(mesh).isDisks());
    znTest::makeTorus(mesh, 64, 24);
    cut(mesh);
    EXPECT_TRUE(Topology(mesh).isDisks());
    // Once round the tube, and once along its inner side.
    EXPECT_LT(seamLength(mesh), 1.02 * 2 * std::numbers::pi * (0.4 + 0.6));

    const std::vector<std::vector<std::string>> slabs{
        {"###", "# #", "###"}, {"#####", "# # #", "#####"}, {"#####", "# # #", "#####", "## ##", "#####"}};
    for (size_t genus = 1; genus <= slabs.size(); ++genus) {
        CompactMesh slab = znTest::makeSlab(slabs[genus - 1]);
        EXPECT_EQ(Topology(slab).characteristic, 2 - 2 * static_cast<int>(genus));
        EXPECT_GT(cut(slab), 0);
        EXPECT_TRUE(Topology(slab).isDisks()) << genus;
    }
}

TEST(MakeDisk, UsesBordersAndCutsEachComponentOnItsOwn)
{
    // The border along one side of the tube is a way that is open already: only a loop round the tube is missing.
    CompactMesh torus;
    znTest::makeTorus(torus, 40, 16);
    int numLeft = 0;
    for (int t = 0; t < torus.getNumTriangles(); ++t)
        if (t / 2 % 16 != 7 || t / 32 < 2) torus.getTriangles()[numLeft++] = torus.getTriangles()[t];
    torus.resizeTriangleArray(numLeft);
    EXPECT_EQ(Topology(torus).borders, 1);
    EXPECT_LT(cut(torus), 12 + 8);
    EXPECT_TRUE(Topology(torus).isDisks());

    // A slab with a handle, one with none, and a sheet.
    CompactMesh many = znTest::makeSlab({"### ###  ", "# # ###  ", "###      "});
    const int first = many.getNumVertices(), numTriangles = many.getNumTriangles();
    many.resizeVertexArray(first + 3);
    for (int i = 0; i < 3; ++i) many.getVertices()[first + i].set(float(i), float(i * i), 7);
    many.resizeTriangleArray(numTriangles + 1);
    many.getTriangles()[numTriangles] = {first, first + 1, first + 2};
    EXPECT_EQ(Topology(many).components, 3);
    EXPECT_GT(cut(many), 0);
    EXPECT_TRUE(Topology(many).isDisks());
    EXPECT_EQ(many.getTriangles()[numTriangles][1], first + 1);
}

TEST(MakeDisk, LeavesDisksAndWhatIsNoSurface)
{
    CompactMesh annulus, mobius, tube = znTest::makeSlab({"##"});
    znTest::makeAnnulus(annulus, 12);
    znTest::makeMobiusBand(mobius, 9);
    tube.resizeTriangleArray(tube.getNumTriangles() - 1);
    for (CompactMesh mesh : {CompactMesh(), znTest::makeGrid(5, 4), annulus, tube}) {
        const CompactMesh before(mesh);
        znTest::ChangeRecorder recorder(mesh);
        EXPECT_EQ(cut(mesh), 0);
        EXPECT_TRUE(recorder.changes().empty());
        EXPECT_TRUE(znTest::sameBits(mesh, before));
    }
    for (CompactMesh mesh :
         {mobius, znTest::makeMesh(5, {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}}), znTest::makeMesh(2, {{0, 1, 1}})})
        EXPECT_EQ(cut(mesh), -1);
    znTest::Random random(3);
    for (int round = 0; round < 60; ++round) {
        CompactMesh any = znTest::makeAnyMesh(random, round);
        if (round % 4 == 0) any.getVertices()[0].x = round % 8 == 0 ? NAN : INFINITY;
        const int numCopies = cut(any);
        EXPECT_TRUE(numCopies <= 0 || Topology(any).isDisks()) << round;
    }
}

TEST(MakeDisk, CopiesCarryEverythingAndACancelLeavesNothing)
{
    CompactMesh torus;
    znTest::makeTorus(torus, 12, 8);
    torus.allocUVArray();
    torus.allocNormalArray();
    MeshAttributes* weights = torus.allocAttributes("weights", 1);
    torus.getSelectedVertices().resize(torus.getNumVertices());
    for (int i = 0; i < torus.getNumVertices(); ++i) {
        weights->asFloat()[i] = float(i);
        torus.getUVs()[i].set(float(i), 2 * float(i));
        if (i % 2 == 0) torus.getSelectedVertices().setBit(i);
    }
    const CompactMesh before(torus);
    zn::vector<int> originals;
    znUtil::Progress cancelled;
    cancelled.cancel();
    EXPECT_FALSE(cutSurface::makeDisk(torus, originals, cancelled));
    EXPECT_TRUE(znTest::sameBits(torus, before));

    znTest::ChangeRecorder recorder(torus);
    znUtil::Progress progress;
    EXPECT_TRUE(cutSurface::makeDisk(torus, originals, progress));
    ASSERT_EQ(recorder.changes().size(), 1u);
    EXPECT_EQ(recorder.changes()[0].type, MeshModification::TopologyChanged);
    ASSERT_TRUE(torus.getUVs() && torus.getNormals());
    for (int i = 0; i < originals.size(); ++i) {
        const int copy = before.getNumVertices() + i;
        EXPECT_EQ(torus.getAttributes("weights")->asFloat()[copy], float(originals[i]));
        EXPECT_EQ(torus.getUVs()[copy].v, 2 * float(originals[i]));
        EXPECT_EQ(torus.getSelectedVertices().isSet(copy), originals[i] % 2 == 0);
    }
}
