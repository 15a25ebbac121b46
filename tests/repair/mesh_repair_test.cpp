#include "znGeom/repair/mesh_repair.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/defects.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "znGeom/spatial/queries/mesh_intersect.h"

using namespace znGeom;
using znTest::countDefects;
using znTest::Damage;
using znTest::Defects;
using znTest::LogRecorder;
using znTest::Random;

namespace {

using Tests = MeshCharacteristics;

/// Adds the vertices and triangles of another mesh, moved along x.
void append(CompactMesh& mesh, const CompactMesh& other, float dx)
{
    const int numVertices = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    mesh.resizeVertexArray(numVertices + other.getNumVertices());
    mesh.resizeTriangleArray(numTriangles + other.getNumTriangles());
    for (int v = 0; v < other.getNumVertices(); ++v) {
        mesh.getVertices()[numVertices + v] = other.getVertices()[v];
        mesh.getVertices()[numVertices + v].x += dx;
    }
    for (int corner = 0; corner < 3 * other.getNumTriangles(); ++corner)
        mesh.getTrianglesRaw()[3 * numTriangles + corner] = other.getTrianglesRaw()[corner] + numVertices;
}

void addTriangle(CompactMesh& mesh, int a, int b, int c)
{
    const int number = mesh.getNumTriangles();
    mesh.resizeTriangleArray(number + 1);
    mesh.getTriangles()[number] = MeshTriangle{{a, b, c}};
}

bool sameArrays(const CompactMesh& a, const CompactMesh& b)
{
    return a.getNumVertices() == b.getNumVertices() && a.getNumTriangles() == b.getNumTriangles() &&
           std::equal(a.getTrianglesRaw(), a.getTrianglesRaw() + 3 * a.getNumTriangles(), b.getTrianglesRaw()) &&
           std::memcmp(a.getVertices(), b.getVertices(), sizeof(MeshVertex) * size_t(a.getNumVertices())) == 0;
}

TEST(MeshCharacteristics, RunsATestOnceAndOnlyWhenAsked)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 2);
    MeshCharacteristics tests(mesh);
    LogRecorder log;
    EXPECT_EQ(tests.getTestsPerformed(), 0);
    EXPECT_TRUE(tests.checkManifold() && tests.checkOriented() && tests.checkGoodTriangles());
    EXPECT_EQ(tests.getTestsPerformed(),
              Tests::Manifold | Tests::Oriented | Tests::GoodTriangles | Tests::TopoGoodTriangles);
    EXPECT_EQ(tests.getTestsPassed(), tests.getTestsPerformed());
    EXPECT_TRUE(tests.checkGoodAngles(20) && tests.checkGoodAngles(20));
    EXPECT_EQ(log.count("   meshFindAnglesLessThan"), 1);
    EXPECT_FALSE(tests.checkGoodAngles(179.9));
    EXPECT_EQ(log.count("   meshFindAnglesLessThan"), 2);
    EXPECT_EQ(tests.getTestsPassed() & Tests::GoodAngles, 0);
    EXPECT_EQ(tests.getNumFoldedTriangles(), 2 * tests.getGoodAnglesResult()->edges.size());
    EXPECT_TRUE(tests.checkNonIntersecting() && tests.checkNonIntersecting());
    EXPECT_EQ(log.count("znGeom::meshSelfIntersect"), 1);
    EXPECT_TRUE(tests.checkManifold() && tests.checkTopoGoodTriangles());
    EXPECT_EQ(log.count("meshManifold"), 1);
    EXPECT_EQ(log.count("meshDuplicateTris"), 1);

    tests.reset(Tests::TopoGoodTriangles);
    EXPECT_EQ(tests.getGoodAnglesResult(), nullptr);
    EXPECT_EQ(tests.getNumFoldedTriangles(), 0);
    EXPECT_FALSE(tests.checkGoodAngles(179.9)) << "its answer stays";
    EXPECT_EQ(log.count("   meshFindAnglesLessThan"), 2);
    EXPECT_EQ(tests.getNumBadTriangles(), 0);
    tests.reset(Tests::AllTests);
    EXPECT_EQ(tests.getTestsPerformed(), 0);
    EXPECT_EQ(tests.getManifoldResult(), nullptr);
    EXPECT_EQ(tests.getNumNonManifoldEdges() + tests.getNumNonManifoldVertices(), 0);
    EXPECT_EQ(log.count("meshManifold"), 2);
}

// Which of the two tests of triangles is asked first decides what the second says.
TEST(MeshCharacteristics, CoincidentCornersAreTopologicallyGoodWhenAskedOnTheirOwn)
{
    CompactMesh mesh;
    znTest::makeCube(mesh);
    mesh.getVertices()[mesh.getTriangles()[0][0]] = mesh.getVertices()[mesh.getTriangles()[0][1]];
    MeshCharacteristics topoFirst(mesh), goodFirst(mesh);
    EXPECT_TRUE(topoFirst.checkTopoGoodTriangles());
    EXPECT_FALSE(topoFirst.checkGoodTriangles());
    EXPECT_TRUE(topoFirst.checkTopoGoodTriangles());
    EXPECT_FALSE(goodFirst.checkGoodTriangles());
    EXPECT_FALSE(goodFirst.checkTopoGoodTriangles());
    EXPECT_EQ(goodFirst.getNumBadTriangles(), countDefects(mesh).degenerate);

    MeshCharacteristics copy(goodFirst);
    copy.reset(Tests::AllTests);
    EXPECT_NE(goodFirst.getDuplicateTrisResult(), nullptr) << "a copy goes its own way";
}

TEST(MeshRepair, LeavesACleanMeshAlone)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, 12, 8);
    const CompactMesh before(mesh);
    znTest::ChangeRecorder changes(mesh);
    MeshRepair repair(mesh);
    bool clean = false;
    LogRecorder log;
    EXPECT_FALSE(repair.needsRepair() || repair.canRepair() || repair.repairOnce());
    EXPECT_FALSE(repair.repairAll(&clean));
    EXPECT_TRUE(clean);
    EXPECT_FALSE(repair.repairAll(nullptr));
    EXPECT_EQ(log.count("znGeom::meshSelfIntersect") + log.count("   meshFindAnglesLessThan"), 0)
        << "was not asked for";
    EXPECT_TRUE(changes.changes().empty());
    EXPECT_TRUE(sameArrays(mesh, before));
}

TEST(MeshRepair, MendsOneKindAfterTheOther)
{
    CompactMesh mesh, sphere, crossing;
    znTest::makeTorus(mesh, 20, 12);
    znTest::makeSphere(sphere, 2, 0.5);
    append(mesh, sphere, 9.0f);
    append(mesh, sphere, 9.3f);
    addTriangle(mesh, 0, 0, 1);
    addTriangle(mesh, mesh.getTriangles()[5][1], mesh.getTriangles()[5][0], mesh.getTriangles()[5][2]);
    const int lone = mesh.getNumVertices();
    mesh.resizeVertexArray(lone + 1);
    mesh.getVertices()[lone].set(0.0f, 0.0f, 5.0f);
    addTriangle(mesh, mesh.getTriangles()[8][0], mesh.getTriangles()[8][1], lone);
    std::swap(mesh.getTriangles()[40][0], mesh.getTriangles()[40][1]);
    MeshRepair repair(mesh);
    repair.checkSelfIntersection(true);
    MeshCharacteristics& tests = *repair.getCharacteristics();

    EXPECT_TRUE(repair.needsRepair() && repair.canRepair());
    EXPECT_EQ(tests.getNumBadTriangles(), 2);
    const int numTriangles = mesh.getNumTriangles();
    EXPECT_TRUE(repair.repairOnce());
    EXPECT_EQ(mesh.getNumTriangles(), numTriangles - 2);
    EXPECT_EQ(tests.getTestsPerformed(), 0) << "everything is looked at anew";
    EXPECT_EQ(tests.getNumNonManifoldEdges(), 1);
    EXPECT_TRUE(repair.repairOnce());
    EXPECT_TRUE(tests.checkManifold());
    EXPECT_FALSE(tests.checkOriented());
    EXPECT_TRUE(repair.repairOnce());
    EXPECT_TRUE(tests.checkOriented());
    EXPECT_FALSE(tests.checkNonIntersecting());
    EXPECT_GT(tests.getIntersectingTriangles().getNumSetBits(), 0);
    EXPECT_TRUE(repair.repairOnce());
    EXPECT_FALSE(repair.needsRepair());
    EXPECT_EQ(countDefects(mesh).count(), 0);

    repair.checkSelfIntersection(false);
    EXPECT_EQ(tests.getTestsPerformed() & Tests::NonIntersecting, 0);
    EXPECT_EQ(tests.getIntersectingTriangles().getSize(), 0);
}

TEST(MeshRepair, RemovesFoldsBelowTheAngle)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 6, 6);
    mesh.getVertices()[14].set(2.5f, 3.4f, 0.0f);
    MeshRepair repair(mesh);
    EXPECT_FALSE(repair.needsRepair());
    repair.checkGoodAngles(true);
    EXPECT_TRUE(repair.needsRepair());
    const int numFolded = repair.getCharacteristics()->getNumFoldedTriangles(), numTriangles = mesh.getNumTriangles();
    EXPECT_GT(numFolded, 0);
    bool clean = false;
    EXPECT_TRUE(repair.repairAll(&clean));
    EXPECT_TRUE(clean);
    EXPECT_GE(mesh.getNumTriangles(), numTriangles - numFolded);

    CompactMesh cube;
    znTest::makeCube(cube);
    MeshRepair ofCube(cube);
    ofCube.checkGoodAngles(true);
    EXPECT_FALSE(ofCube.needsRepair());
    ofCube.setMinGoodAngle(91);
    EXPECT_TRUE(ofCube.needsRepair()) << "right angles count now";
    ofCube.checkGoodAngles(false);
    EXPECT_FALSE(ofCube.needsRepair());
}

TEST(MeshRepair, CutsAOneSidedStripOutOfALargerMesh)
{
    CompactMesh mesh, band;
    znTest::makeSphere(mesh, 2);
    znTest::makeMobiusBand(band, 15);
    append(mesh, band, 5.0f);
    const int numOnSphere = mesh.getNumTriangles() - band.getNumTriangles();
    MeshRepair repair(mesh);
    EXPECT_FALSE(repair.hasMobiusStrip() || repair.isMobiusStripRemovable());
    EXPECT_TRUE(repair.repairOnce());
    EXPECT_TRUE(repair.hasMobiusStrip() && repair.isMobiusStripRemovable());
    repair.selectMobiusStrip();
    const BitVector& strip = mesh.getSelectedTriangles();
    EXPECT_GT(strip.getNumSetBits(), 0);
    for (int t = 0; t < numOnSphere; ++t) EXPECT_FALSE(strip[t]);
    EXPECT_GE(mesh.getSelectedVertices().getNumSetBits(), strip.getNumSetBits());
    bool clean = false;
    EXPECT_TRUE(repair.repairAll(&clean));
    EXPECT_TRUE(clean);
    EXPECT_FALSE(repair.hasMobiusStrip());
    EXPECT_GE(mesh.getNumTriangles(), numOnSphere);
    EXPECT_EQ(countDefects(mesh).count(), 0);
}

TEST(MeshRepair, StopsWhereTheWholeMeshIsOneSided)
{
    CompactMesh mesh;
    znTest::makeMobiusBand(mesh, 9);
    const int numTriangles = mesh.getNumTriangles();
    MeshRepair repair(mesh);
    bool clean = true;
    EXPECT_TRUE(repair.repairAll(&clean)) << "some triangles were turned over";
    EXPECT_FALSE(clean);
    EXPECT_TRUE(repair.hasMobiusStrip() && repair.needsRepair());
    EXPECT_FALSE(repair.isMobiusStripRemovable() || repair.canRepair());
    EXPECT_EQ(mesh.getNumTriangles(), numTriangles);
}

TEST(MeshRepair, ACancelKeepsTheStepsThatAreDone)
{
    CompactMesh mesh, sphere;
    znTest::makeSphere(mesh, 3);
    znTest::makeSphere(sphere, 3);
    append(mesh, sphere, 0.5f);
    addTriangle(mesh, 0, 0, 1);
    const CompactMesh original(mesh);
    bool clean = true;
    znUtil::Progress progress;
    const auto repairAll = [&] {
        MeshRepair repair(mesh);
        repair.checkSelfIntersection(true);
        return repair.repairAll(&clean, progress);
    };
    progress.cancel();
    EXPECT_FALSE(repairAll());
    EXPECT_FALSE(clean);
    EXPECT_TRUE(sameArrays(mesh, original));

    progress.reset();
    std::vector<std::string> captions;
    double last = 0;
    progress.setObserver([&](double fraction, const char* caption) {
        EXPECT_GE(fraction, last);
        last = fraction;
        if (captions.empty() || captions.back() != caption) captions.push_back(caption);
        if (fraction > 0.6 && captions.size() > 1) progress.cancel();
    });
    EXPECT_TRUE(repairAll());
    EXPECT_FALSE(clean);
    EXPECT_EQ(mesh.getNumTriangles(), original.getNumTriangles() - 1);
    EXPECT_EQ(captions, (std::vector<std::string>{"checking", "removing bad triangles"}));

    progress.reset();
    progress.setObserver({});
    EXPECT_TRUE(repairAll());
    EXPECT_TRUE(clean);
    EXPECT_EQ(progress.get(), 1.0);
}

/// Repairs a copy and holds the outcome against an independent count.
void checkRepaired(const CompactMesh& given, bool isThorough)
{
    const Defects before = countDefects(given);
    CompactMesh mesh(given);
    MeshRepair repair(mesh);
    repair.checkSelfIntersection(isThorough);
    repair.checkGoodAngles(isThorough);
    EXPECT_TRUE(before.count() > 0 || isThorough || !repair.needsRepair());
    EXPECT_TRUE(before.count() == 0 || repair.needsRepair());
    bool clean = false;
    const bool repaired = repair.repairAll(&clean);
    const Defects after = countDefects(mesh);
    EXPECT_LE(after.count(), before.count());
    EXPECT_TRUE(!clean || after.count() == 0);
    // All that may stay is a mesh that is one-sided as a whole.
    EXPECT_EQ(after.count() - after.unbalanced, 0);
    EXPECT_TRUE(repaired || sameArrays(mesh, given));
    if (!isThorough || !clean) return;
    znUtil::Progress progress;
    std::deque<MeshIntersectPair> crossings;
    MeshIntersect(mesh).selfIntersect(progress, crossings);
    EXPECT_TRUE(crossings.empty());
}

void breakAndRepair(const CompactMesh& given, std::uint64_t seed, bool isThorough)
{
    checkRepaired(given, isThorough);
    for (const Damage kind : znTest::allDamages) {
        Random random(seed);
        CompactMesh broken(given);
        damage(broken, kind, random);
        SCOPED_TRACE(static_cast<int>(kind));
        checkRepaired(broken, isThorough);
    }
}

TEST(MeshRepair, MendsWhateverIsBrokenInAnyWay)
{
    CompactMesh shapes[5];
    znTest::makeGrid(shapes[0], 9, 7);
    znTest::makeSphere(shapes[1], 3);
    znTest::makeTorus(shapes[2], 16, 9);
    znTest::makeMobiusBand(shapes[3], 20);
    znTest::makeNoisyScan(shapes[4], 14, 12);
    for (std::uint64_t seed = 0; seed < 8; ++seed)
        for (const CompactMesh& shape : shapes) breakAndRepair(shape, seed, seed % 2 == 0);
}

TEST(MeshRepair, MendsRealMeshesBrokenInAnyWay)
{
    const auto visit = [](const CompactMesh& mesh) { breakAndRepair(mesh, 1, mesh.getNumTriangles() < 20000); };
    if (!znTest::forEachSharedMesh(100000, visit)) GTEST_SKIP() << "there is no folder of real meshes";
}

} // namespace
