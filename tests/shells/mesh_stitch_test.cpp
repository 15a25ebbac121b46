#include "znGeom/shells/mesh_stitch.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/pieces.h"
#include "tests/support/recorder.h"
#include "tests/support/same_bits.h"
#include "tests/support/shapes.h"
#include "znGeom/cache/mesh_cache.h"
#include "znGeom/scopes/convert_rep.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;
using znLinear::Vector;

namespace {

/// Puts the triangles of one mesh behind those of another.
void append(CompactMesh& mesh, const CompactMesh& other)
{
    const int numVertices = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    mesh.resizeVertexArray(numVertices + other.getNumVertices());
    mesh.resizeTriangleArray(numTriangles + other.getNumTriangles());
    std::copy_n(other.getVertices(), other.getNumVertices(), mesh.getVertices() + numVertices);
    for (int t = 0; t < other.getNumTriangles(); ++t)
        for (int i = 0; i < 3; ++i)
            mesh.getTriangles()[numTriangles + t].corners[i] = other.getTriangles()[t].corners[i] + numVertices;
}

/// A sheet of cells between two corners; \param isTurned  facing down
CompactMesh sheet(double x0, double y0, double x1, double y1, int columns, int rows, bool isTurned = false)
{
    CompactMesh mesh = makeGrid(columns + 1, rows + 1);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        MeshVertex& vertex = mesh.getVertices()[v];
        vertex.set(static_cast<float>(x0 + (x1 - x0) * static_cast<double>(vertex.x) / columns),
                   static_cast<float>(y0 + (y1 - y0) * static_cast<double>(vertex.y) / rows), 0);
    }
    for (int t = 0; isTurned && t < mesh.getNumTriangles(); ++t)
        std::swap(mesh.getTriangles()[t].corners[0], mesh.getTriangles()[t].corners[1]);
    return mesh;
}

CompactMesh tube(int around, double z0, double z1)
{
    CompactMesh mesh = sheet(0, z0, 1, z1, around, 4);
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        MeshVertex& vertex = mesh.getVertices()[v];
        const double angle = 2 * 3.14159265358979 * (v % (around + 1)) / around;
        vertex.set(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), vertex.y);
    }
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        for (int& corner : mesh.getTriangles()[t].corners)
            if (corner % (around + 1) == around) corner -= around;
    return mesh;
}

bool stitch(CompactMesh& mesh, double tolerance, MeshStitchAccount* account = nullptr,
            const zn::vector<int>* chosen = nullptr)
{
    SimpleMeshCache cache;
    const zn::Reference<MeshBoundaries> boundaries = cache.getBoundaries(mesh);
    zn::vector<int> all;
    for (int i = 0; i < boundaries->size(); ++i) all.append(i);
    return meshStitch(mesh, cache.getAdjTris(mesh), boundaries, chosen ? *chosen : all, tolerance, 0.05, account);
}

void expectWhole(const CompactMesh& mesh)
{
    SimpleMeshCache cache;
    MeshConvertRep scope(
        mesh,
        [&] {
            BitVector all(mesh.getNumTriangles());
            all.setAllBits();
            return all;
        }(),
        [&] {
            BitVector all(mesh.getNumVertices());
            all.setAllBits();
            return all;
        }(),
        *cache.getAdjTris(mesh));
    EXPECT_TRUE(checkTopology(scope.extract()));
}

} // namespace

TEST(MeshStitch, SewsTwoTubesAllTheWayRound)
{
    CompactMesh mesh = tube(40, 0, 1);
    append(mesh, tube(40, 1.02, 2));
    MeshStitchAccount account;
    ASSERT_TRUE(stitch(mesh, 0.1, &account));
    const Figures figures = figuresOf(mesh);
    EXPECT_EQ(figures.components, 1);
    EXPECT_EQ(figures.borders, 2);
    EXPECT_EQ(figures.euler, 0);
    EXPECT_EQ(mesh.getNumVertices(), 2 * 5 * 41 - 40);
    ASSERT_EQ(account.pairs.size(), 1);
    EXPECT_TRUE(account.pairs[0].isCircular && account.pairs[0].isSewn);
    EXPECT_NEAR(account.pairs[0].length, 2 * 3.1416, 0.01);
    EXPECT_EQ(account.outcomes, (zn::vector<StitchOutcome>{StitchOutcome::NothingBeside, StitchOutcome::Sewn,
                                                           StitchOutcome::Sewn, StitchOutcome::NothingBeside}));
    expectWhole(mesh);
}

TEST(MeshStitch, ClosesASlitALInALAndLeavesOneSmallHoleInAT)
{
    // The middle row of a sheet is cut along ten edges: its inner vertices are doubled.
    CompactMesh slit = sheet(0, 0, 3, 1, 30, 10);
    const int first = slit.getNumVertices();
    slit.resizeVertexArray(first + 9);
    for (int i = 0; i < 9; ++i) slit.getVertices()[first + i] = slit.getVertices()[5 * 31 + 11 + i];
    for (int t = 0; t < slit.getNumTriangles(); ++t) {
        if (t / 2 / 30 < 5) continue;
        for (int& corner : slit.getTriangles()[t].corners)
            if (corner >= 5 * 31 + 11 && corner < 5 * 31 + 20) corner += first - 5 * 31 - 11;
    }
    ASSERT_EQ(figuresOf(slit).borders, 2);
    ASSERT_TRUE(stitch(slit, 0.1));
    EXPECT_EQ(figuresOf(slit).borders, 1);
    EXPECT_EQ(figuresOf(slit).euler, 1);
    EXPECT_EQ(slit.getNumVertices(), 31 * 11);
    expectWhole(slit);

    // A square set in the corner of an L.
    CompactMesh corner = sheet(0, 0, 2, 1, 20, 10);
    append(corner, sheet(0, 1, 1, 2, 10, 10));
    ASSERT_TRUE(stitch(corner, 0.05));
    append(corner, sheet(1.02, 1.02, 2, 2, 13, 7));
    ASSERT_TRUE(stitch(corner, 0.1));
    EXPECT_EQ(figuresOf(corner).components, 1);
    EXPECT_EQ(figuresOf(corner).borders, 1);
    EXPECT_EQ(figuresOf(corner).euler, 1);
    EXPECT_EQ(figuresOf(corner).flatTriangles, 0);
    expectWhole(corner);

    CompactMesh three = sheet(0, 0, 2, 1, 20, 10);
    append(three, sheet(0, 1.02, 0.98, 2, 10, 10));
    append(three, sheet(1.02, 1.02, 2, 2, 10, 10));
    MeshStitchAccount account;
    ASSERT_TRUE(stitch(three, 0.1, &account));
    EXPECT_EQ(account.pairs.size(), 3);
    EXPECT_EQ(figuresOf(three).components, 1);
    EXPECT_EQ(figuresOf(three).borders, 2);
    EXPECT_EQ(figuresOf(three).euler, 0);
    EXPECT_EQ(figuresOf(three).flatTriangles, 0);
    expectWhole(three);
}

TEST(MeshStitch, TurnsShellsOverOnceAndKeepsSelections)
{
    CompactMesh mesh = sheet(0, 0, 1, 1, 10, 10);
    append(mesh, sheet(1.01, 0, 2, 1, 12, 12, true));
    append(mesh, sheet(2.01, 0, 3, 1, 9, 9));
    append(mesh, sheet(5, 0, 6, 1, 10, 10)); // alone
    mesh.getSelectedTriangles().resize(mesh.getNumTriangles());
    mesh.getSelectedTriangles().setBit(110);
    mesh.getSelectedTriangles().setBit(200 + 288 + 162 + 110);
    MeshStitchAccount account;
    CompactMesh far = mesh;
    ASSERT_TRUE(stitch(mesh, 0.05, &account));
    ASSERT_EQ(account.turned.size(), 1);
    EXPECT_TRUE(account.turned[0] >= 200 && account.turned[0] < 488);
    EXPECT_EQ(mesh.getSelectedTriangles().getNumSetBits(), 2);
    EXPECT_EQ(figuresOf(mesh).components, 2);
    EXPECT_EQ(figuresOf(mesh).borders, 2);
    EXPECT_TRUE(figuresOf(mesh).isOriented);
    expectWhole(mesh);

    // A strip closed with half a twist can't be put right: no seam, nothing turned.
    CompactMesh twisted;
    makeMobiusBand(twisted, 60);
    append(twisted, sheet(50, 0, 60, 1, 20, 2));
    const CompactMesh before = twisted;
    EXPECT_FALSE(stitch(twisted, 1e-3));
    EXPECT_TRUE(sameBits(twisted, before));
}

TEST(MeshStitch, ChangesNothingWithoutAPair)
{
    CompactMesh mesh = sheet(0, 0, 1, 1, 10, 10);
    append(mesh, sheet(1.01, 0, 2, 1, 10, 10));
    mesh.getSelectedTriangles().resize(mesh.getNumTriangles());
    mesh.getSelectedTriangles().setBit(3);
    const CompactMesh before = mesh;
    ChangeRecorder recorder(mesh);
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double tolerance : {0.0, -1.0, infinite, std::nan(""), 1e-30, 1e-9, 5e-3, 10.0, 1e30}) {
        EXPECT_FALSE(stitch(mesh, tolerance)) << tolerance;
        EXPECT_TRUE(sameBits(mesh, before));
    }
    for (const zn::vector<int>& chosen : {zn::vector<int>{}, zn::vector<int>{0}, zn::vector<int>{0, 0, -3, 7}}) {
        EXPECT_FALSE(stitch(mesh, 0.05, nullptr, &chosen));
        EXPECT_TRUE(sameBits(mesh, before));
    }
    EXPECT_TRUE(recorder.changes().empty());
    const zn::vector<int> both{1, 0};
    EXPECT_TRUE(stitch(mesh, 0.05, nullptr, &both));
    EXPECT_EQ(recorder.changes().size(), 1u);
    CompactMesh empty;
    EXPECT_FALSE(stitch(empty, 1));
}

TEST(MeshStitch, BringsBackWhatPlanesHaveCut)
{
    int numSetAside = 0;
    for (int round = 0; round < 24; ++round) {
        SCOPED_TRACE(round);
        CompactMesh whole;
        if (round % 2 == 0)
            makeTorus(whole, 48, 24);
        else
            makeSphere(whole, 4);
        const double scale = std::vector{1.0, 1e-3, 1e3}[static_cast<std::size_t>(round % 3)];
        for (int v = 0; v < whole.getNumVertices(); ++v) {
            const Point p = (whole.getVertices()[v].asPoint().asVector() * scale).asPoint();
            whole.getVertices()[v].set(&p.x);
        }
        const Figures expected = figuresOf(whole);
        Random random(static_cast<std::uint64_t>(round));
        PieceOptions options;
        const Vector axes[] = {Vector(1, 0.1, 0.2), Vector(0.2, 1, -0.1), Vector(-0.3, 0.1, 1)};
        for (int i = 0; i <= round % 3; ++i)
            options.planes.emplace_back(random.point(0.1 * scale), znLinear::Normal(axes[i] + random.vector(0.5)));
        const bool doCoincide = round % 4 < 2;
        const double tolerance = (round % 5 == 0 ? 0.06 : 0.02) * scale;
        options.mostSteps = 1 + round % 4;
        options.turnsOver = round % 4 != 1;
        if (!doCoincide) options.shift = 0.5 * tolerance;
        CompactMesh mesh = cutIntoPieces(whole, options, random);
        if (areTooSmallToSew(mesh, tolerance, doCoincide)) {
            ++numSetAside;
            continue;
        }
        const Figures ofPieces = figuresOf(mesh);
        ASSERT_GT(ofPieces.components, 1);
        CompactMesh again = mesh;
        ASSERT_TRUE(stitch(mesh, tolerance));
        const Figures figures = figuresOf(mesh);
        EXPECT_EQ(figures.components, 1);
        EXPECT_EQ(figures.borders, 0);
        EXPECT_EQ(figures.euler, expected.euler);
        EXPECT_TRUE(figures.isOriented);
        EXPECT_LE(figures.flatTriangles, ofPieces.flatTriangles);
        EXPECT_NEAR(std::fabs(figures.volume), expected.volume,
                    doCoincide ? 1e-6 * expected.volume : expected.area * tolerance);
        expectWhole(mesh);
        ASSERT_TRUE(stitch(again, tolerance));
        EXPECT_TRUE(sameBits(mesh, again));
    }
    EXPECT_LE(numSetAside, 3);
}

TEST(MeshStitch, SewsANarrowStripInWhereBordersCoincideAndTellsWhatRunsBesideTooLittle)
{
    CompactMesh mesh = sheet(0, 0, 2, 1, 20, 10);
    append(mesh, sheet(0, 1, 2, 1.03, 30, 1));
    append(mesh, sheet(0, 1.03, 2, 2, 25, 10));
    ASSERT_TRUE(stitch(mesh, 0.06));
    const Figures figures = figuresOf(mesh);
    EXPECT_EQ(figures.components, 1);
    EXPECT_EQ(figures.borders, 1);
    EXPECT_EQ(figures.euler, 1);
    EXPECT_EQ(figures.flatTriangles, 0);
    EXPECT_NEAR(figures.area, 4, 1e-6);
    expectWhole(mesh);

    CompactMesh corners = sheet(0, 0, 1, 1, 10, 10);
    append(corners, sheet(1.01, 0.98, 2, 2, 10, 10));
    append(corners, sheet(5, 0, 6, 1, 10, 10));
    MeshStitchAccount account;
    EXPECT_FALSE(stitch(corners, 0.05, &account));
    EXPECT_EQ(account.outcomes, (zn::vector<StitchOutcome>{StitchOutcome::TooNarrow, StitchOutcome::TooNarrow,
                                                           StitchOutcome::NothingBeside}));
}

TEST(MeshStitch, SewsALoopRoundThatTouchesABorderInOneVertex)
{
    // A tilted rim and a dome inside it: a plane through the highest vertex of the rim cuts the dome off.
    CompactMesh dome = tube(60, 0.3, 1);
    for (int v = 0; v < dome.getNumVertices(); ++v) {
        MeshVertex& p = dome.getVertices()[v];
        const double r = static_cast<double>(p.z);
        const double x = r * static_cast<double>(p.x), y = r * static_cast<double>(p.y), r2 = x * x + y * y;
        p.set(static_cast<float>(x), static_cast<float>(y), static_cast<float>(1 - r2 - 0.5 * (1 - x)));
    }
    const Figures expected = figuresOf(dome);
    Random random(1);
    PieceOptions options;
    options.planes.emplace_back(Point(1, 0, 0), znLinear::Normal(0, 0, 1));
    CompactMesh mesh = cutIntoPieces(dome, options, random);
    ASSERT_EQ(figuresOf(mesh).components, 2);
    ASSERT_TRUE(stitch(mesh, 0.02));
    EXPECT_EQ(figuresOf(mesh).components, 1);
    EXPECT_EQ(figuresOf(mesh).borders, expected.borders);
    EXPECT_EQ(figuresOf(mesh).euler, expected.euler);
    EXPECT_NEAR(figuresOf(mesh).area, expected.area, 1e-6);
    expectWhole(mesh);
}

TEST(MeshStitch, IsTheSameOnEveryPool)
{
    CompactMesh pieces = sheet(0, 0, 1, 1, 10, 10);
    append(pieces, sheet(1.0004, 0, 2, 1, 13, 13));
    std::vector<CompactMesh> results;
    for (const int numThreads : {1, 2, 7}) {
        CompactMesh mesh = pieces;
        SimpleMeshCache cache;
        znUtil::ThreadPool pool(numThreads);
        ASSERT_TRUE(
            meshStitch(mesh, cache.getAdjTris(mesh), cache.getBoundaries(mesh), {0, 1}, 1e-3, 0.05, nullptr, pool));
        EXPECT_EQ(figuresOf(mesh).components, 1);
        results.push_back(mesh);
    }
    EXPECT_TRUE(sameBits(results[0], results[1]));
    EXPECT_TRUE(sameBits(results[0], results[2]));
}
