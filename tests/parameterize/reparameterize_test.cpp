#include "znGeom/parameterize/reparameterize_mesh.h"

#include <numbers>

#include <gtest/gtest.h>

#include "tests/parameterize/charts.h"
#include "tests/support/recorder.h"
#include "tests/support/same_bits.h"
#include "tests/support/tangles.h"
#include "znGeom/parameterize/cut_surface.h"
#include "znGeom/parameterize/internal/boundary_walk.h"
#include "znGeom/parameterize/uv_distortion.h"

using namespace znGeom;
using znLinear::Point;
using Lines = std::vector<std::string>;

namespace {

/// Listens to the output for the user; an error begins with "E ".
struct OutputRecorder
{
    Lines lines;

    OutputRecorder()
    {
        znOS::AppOutput::getInstance().setInfoSink([this](const std::string& text) { lines.push_back(text); });
        znOS::AppOutput::getInstance().setErrorSink([this](const std::string& text) { lines.push_back("E " + text); });
    }
    ~OutputRecorder()
    {
        znOS::AppOutput::getInstance().setInfoSink({});
        znOS::AppOutput::getInstance().setErrorSink({});
    }
    bool has(const std::string& line) const { return std::find(lines.begin(), lines.end(), line) != lines.end(); }
};

bool flatten(CompactMesh& mesh) { return reparameterizeMesh(mesh).flatten(); }

std::vector<float> uvsOf(const CompactMesh& mesh)
{
    return {mesh.getUVsRaw(), mesh.getUVsRaw() + 2 * mesh.getNumVertices()};
}

void expectIsometric(CompactMesh mesh)
{
    ASSERT_TRUE(flatten(mesh));
    const MeshUVDistortion distortion = meshUVDistortion(mesh);
    EXPECT_EQ(distortion.numFlipped + distortion.numCollapsed, 0);
    EXPECT_LT(distortion.largestStretch, 1 + 1e-5);
    EXPECT_GT(distortion.smallestScale, 1 - 1e-5);
    EXPECT_LT(distortion.largestScale, 1 + 1e-5);
}

/// A sheet with waves, a hole, and an unused vertex.
CompactMesh makeSheet()
{
    CompactMesh mesh = znTest::bend(24, 18, [](double x, double y) {
        return Point(x, y + 0.1 * std::sin(x), 1.5 * std::sin(0.4 * x) * std::cos(0.3 * y));
    });
    int numLeft = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        if (const int column = t / 2 % 23, row = t / 46; column < 5 || column > 9 || row < 4 || row > 6)
            mesh.getTriangles()[numLeft++] = mesh.getTriangles()[t];
    mesh.resizeTriangleArray(numLeft);
    return mesh;
}

} // namespace

TEST(Reparameterize, LaysFlatWhatCanBe)
{
    using std::numbers::pi;
    expectIsometric(znTest::makeGrid(7, 5));
    expectIsometric(znTest::bend(30, 9, [](double x, double y) {
        return Point(5 * std::cos(x * pi / 20), 0.5 * y, 5 * std::sin(x * pi / 20));
    }));
    expectIsometric(znTest::bend(25, 10, [](double x, double y) { // a cone without its tip
        return Point((2 + y) * std::cos(x * pi / 16), (2 + y) * std::sin(x * pi / 16), 1.5 * y);
    }));
    expectIsometric(znTest::bend(13, 6, [](double x, double y) { // paper folded twice
        return Point(x < 4 ? x : x < 8 ? 4 : x - 4, y, x < 4 ? 0 : x < 8 ? x - 4 : 4);
    }));
    CompactMesh annulus;
    znTest::makeAnnulus(annulus, 40);
    expectIsometric(annulus);                    // the hole has no force on its rim
    CompactMesh comb = znTest::makeGrid(61, 41); // with a hole of many teeth, too long to be bridged
    int numLeft = 0;
    for (int t = 0; t < comb.getNumTriangles(); ++t)
        if (const int x = t / 2 % 60, y = t / 120; x < 2 || x > 57 || y < 2 || y > 37 || (x % 2 == 1 && y > 2))
            comb.getTriangles()[numLeft++] = comb.getTriangles()[t];
    comb.resizeTriangleArray(numLeft);
    expectIsometric(comb);
}

TEST(Reparameterize, IsTheSameInEveryUnitAndFitsTheSquare)
{
    CompactMesh mesh = makeSheet();
    ASSERT_TRUE(flatten(mesh));
    const std::vector<float> uvs = uvsOf(mesh);
    float longest = 0;
    for (const float value : uvs) {
        EXPECT_TRUE(value >= 0 && value <= 1);
        longest = std::max(longest, value);
    }
    EXPECT_EQ(longest, 1);
    EXPECT_EQ(meshUVDistortion(mesh).numFlipped, 0);
    for (const float unit : {1024.0f, 1.0f / 1024}) {
        CompactMesh scaled = makeSheet();
        for (float* value = scaled.getVerticesRaw(); value < scaled.getVerticesRaw() + 3 * scaled.getNumVertices();)
            *value++ *= unit;
        ASSERT_TRUE(flatten(scaled));
        EXPECT_EQ(uvsOf(scaled), uvs);
    }
}

TEST(Reparameterize, CutsACopyAndKeepsTheSeamsOfAMesh)
{
    CompactMesh torus;
    znTest::makeTorus(torus, 48, 20);
    CompactMesh kept(torus), opened(torus);
    const CompactMesh before(torus);
    {
        reparameterizeMesh flattening(kept);
        flattening.enableMeshCutSurface(false);
        EXPECT_FALSE(flattening.flatten());
        EXPECT_TRUE(znTest::sameBits(kept, before));
    }
    ASSERT_TRUE(flatten(torus));
    torus.deleteUVs();
    EXPECT_TRUE(znTest::sameBits(torus, before)) << "but for the coordinates";

    ASSERT_TRUE(cutSurface::makeDisk(opened));
    for (const bool isWelded : {false, true}) {
        CompactMesh mesh(opened);
        OutputRecorder output;
        reparameterizeMesh flattening(mesh);
        flattening.enableMeshCompact(false);
        flattening.enableMeshWelding(isWelded);
        ASSERT_TRUE(flattening.flatten());
        EXPECT_EQ(output.has("prepareMesh: numBoundaries o = 1, c = 0\n"), isWelded);
        EXPECT_EQ(output.has("prepareMesh: compacting changed topology, reverting\n"), isWelded);
        const MeshUVDistortion distortion = meshUVDistortion(mesh);
        EXPECT_EQ(distortion.numFlipped, 0);
        EXPECT_LT(distortion.largestStretch, 1.2);
    }
    // Merged in any case, a soup is one piece, and all vertices at a position have the same coordinates.
    CompactMesh sheet = makeSheet(), soup;
    znTest::makeSoup(soup, sheet);
    ASSERT_TRUE(flatten(sheet) && flatten(soup));
    for (int corner = 0; corner < soup.getNumVertices(); ++corner)
        EXPECT_NEAR(soup.getUVs()[corner].u, sheet.getUVs()[sheet.getTrianglesRaw()[corner]].u, 1e-6);
}

TEST(Reparameterize, TellsWhatItDoesToTheLetter)
{
    CompactMesh square = znTest::makeGrid(2, 2);
    square.resizeVertexArray(5);
    square.getVertices()[4].set(7, 8, 9); // used by nothing
    znTest::ChangeRecorder recorder(square);
    OutputRecorder output;
    znUtil::Progress progress;
    Lines captions{""};
    std::vector<double> begins;
    progress.setObserver([&](double fraction, const char* caption) {
        if (captions.back() == caption) return;
        captions.push_back(caption);
        begins.push_back(fraction);
    });
    EXPECT_TRUE(reparameterizeMesh(square).flatten(progress));
    EXPECT_EQ(progress.get(), 1);
    EXPECT_EQ(captions, (Lines{"", "Copying Mesh", "Finding Mesh Boundaries", "Getting Extreme Vertices",
                               "Creating Plane", "Filling Mesh Holes", "Solving", "Applying to Mesh"}));
    const double shares[] = {0, 0.025, 0.125, 0.15, 0.2, 0.225, 0.975}; // one phase has no caption
    for (size_t i = 0; i < begins.size(); ++i) EXPECT_NEAR(begins[i], shares[i], 1e-12);
    EXPECT_EQ(output.lines,
              (Lines{"getMeshGenus: numBoundaries 1 \n", "getMeshGenus: numBoundaryEdges 4 \n",
                     "getMeshGenus: numVertices 4 \n", "getMeshGenus: numTriangles 2 \n", "getMeshGenus: numEdges 5 \n",
                     "getMeshGenus: chi = 1 + 4 + 2 - 5 = 2 \n", "getMeshGenus: genus = ( 2 - 2 ) / 2 = 0 \n",
                     "- - - MeshReparameterize: genus = 0\n",
                     "Parameterization: calculated planeNormal is good.  Using orthogonal component.\n",
                     "Parameterization: CG finished, code = 1\n"}));
    ASSERT_EQ(recorder.changes().size(), 1u);
    EXPECT_EQ(recorder.changes()[0].type, MeshModification::AttributesChanged);
    EXPECT_EQ(recorder.changes()[0].modified, (znTest::Change::Channels{MeshModification::UVs}));
    EXPECT_EQ(square.getUVs()[4].u, 0);

    output.lines.clear();
    CompactMesh sheet = makeSheet();
    EXPECT_TRUE(flatten(sheet));
    EXPECT_TRUE(output.has("Parameterization   5.0% complete\n"));
    EXPECT_EQ(output.lines.back(), "Parameterization: CG finished, code = 1\n");
}

TEST(Reparameterize, FindsAPlaneWhereTheBorderHasNone)
{
    // Two long pyramids on a triangle: they are slit from tip to tip, there and back.
    const std::string failed = "Parameterization: failed to calculateD planeNormal.  Choosing Z-axis instead.\n";
    const std::string along = "Parameterization: calculated planeNormal is (anti-)parallel to the vector between the "
                              "fixed vertices of the 3D-boundary.  Choosing a random orthogonal vector instead.\n";
    for (const bool isUpright : {false, true}) {
        CompactMesh mesh = znTest::makeMesh(5, {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {4, 2, 1}, {4, 3, 2}, {4, 1, 3}});
        const float places[][3] = {{-9, 0, 0}, {0, 1, 0}, {0, -0.5f, 1}, {0, -0.5f, -1}, {9, 0, 0}};
        for (int i = 0; i < 5; ++i)
            mesh.getVertices()[i].set(places[i][isUpright ? 1 : 0], places[i][isUpright ? 2 : 1],
                                      places[i][isUpright ? 0 : 2]);
        OutputRecorder output;
        ASSERT_TRUE(flatten(mesh));
        const auto first = std::find(output.lines.begin(), output.lines.end(), failed);
        ASSERT_NE(first, output.lines.end());
        EXPECT_EQ(first[1], isUpright ? along : "Parameterization: CG finished, code = 1\n");
        for (const float value : uvsOf(mesh)) EXPECT_TRUE(value >= 0 && value <= 1);
    }
}

TEST(Reparameterize, RefusesWhatIsNoDisk)
{
    CompactMesh two = makeSheet(), infinite = makeSheet();
    two.resizeTriangleArray(two.getNumTriangles() + 1);
    two.resizeVertexArray(two.getNumVertices() + 3);
    for (int i = 0; i < 3; ++i) {
        two.getTriangles()[two.getNumTriangles() - 1][i] = two.getNumVertices() - 3 + i;
        two.getVertices()[two.getNumVertices() - 3 + i].set(float(i), float(i * i), 9);
    }
    infinite.getVertices()[30].y = INFINITY;
    CompactMesh sameEverywhere = znTest::makeMesh(3, {{0, 1, 2}});
    for (int i = 0; i < 3; ++i) sameEverywhere.getVertices()[i].set(1, 1, 1);
    const struct
    {
        CompactMesh mesh;
        const char* last;
        bool isWelded = true;
    } cases[] = {
        {CompactMesh(), "getMeshGenus: genus = ( 2 - 0 ) / 2 = 1 \n"},
        {two, "- - - MeshReparameterize: genus = -1\n"},
        {infinite, "MeshReparameterize: a position is not finite, mesh not changed.\n"},
        {znTest::makeMesh(6, {{0, 1, 2}, {3, 3, 5}}), "- - - MeshReparameterize: genus = -1\n"},
        {sameEverywhere, "- - - MeshReparameterize: outerBoundary = -1\n", false},
    };
    for (const auto& refused : cases) {
        CompactMesh mesh(refused.mesh);
        znTest::ChangeRecorder recorder(mesh);
        OutputRecorder output;
        reparameterizeMesh flattening(mesh);
        flattening.enableMeshWelding(refused.isWelded);
        EXPECT_FALSE(flattening.flatten());
        ASSERT_FALSE(output.lines.empty());
        EXPECT_EQ(output.lines.back(), refused.last);
        EXPECT_TRUE(recorder.changes().empty());
        EXPECT_TRUE(znTest::sameBits(mesh, refused.mesh));
    }
    OutputRecorder output;
    CompactMesh degenerate = znTest::makeMesh(6, {{0, 1, 2}, {3, 3, 5}});
    EXPECT_FALSE(flatten(degenerate));
    EXPECT_EQ(output.lines[0], "E Found degenerate triangle 1 (3,3,4), mesh not changed. \n");
    EXPECT_EQ(output.lines[1], "getMeshGenus: testDegenerate == true\n");
    znTest::Random random(8);
    for (int round = 0; round < 60; ++round) {
        CompactMesh any = znTest::makeAnyMesh(random, round);
        const CompactMesh before(any);
        EXPECT_TRUE(flatten(any) || znTest::sameBits(any, before)) << round;
    }
}

TEST(Reparameterize, CopesWithTrianglesWithoutArea)
{
    // A fold of no width in the border, and a vertex in it that nothing else holds.
    CompactMesh mesh = znTest::makeGrid(6, 5);
    mesh.resizeVertexArray(31);
    mesh.getVertices()[30].set(0.5f, 0, 0);
    mesh.resizeTriangleArray(mesh.getNumTriangles() + 1);
    mesh.getTriangles()[mesh.getNumTriangles() - 1] = {1, 0, 30};
    ASSERT_TRUE(flatten(mesh));
    for (const float value : uvsOf(mesh)) EXPECT_TRUE(value >= 0 && value <= 1);
    EXPECT_LT(meshUVDistortion(mesh).largestStretch, 1 + 1e-5);

    // Two halves with nothing but such triangles between them: either can turn about its pin, and stays.
    CompactMesh halves = znTest::bend(6, 4, [](double x, double y) { return Point(x < 3 ? x : x - 1, y, 0); });
    reparameterizeMesh flattening(halves);
    flattening.enableMeshWelding(false);
    ASSERT_TRUE(flattening.flatten());
    const MeshUVDistortion distortion = meshUVDistortion(halves);
    EXPECT_LT(distortion.largestStretch, 1 + 1e-5);
    EXPECT_LT(distortion.largestScale, 1 + 1e-5);
}

TEST(Reparameterize, ACancelLeavesNoTrace)
{
    CompactMesh torus;
    znTest::makeTorus(torus, 40, 16);
    for (const double at : {-1.0, 0.001, 0.02, 0.1, 0.13, 0.2, 0.225, 0.25, 0.3, 0.5, 0.96}) {
        for (CompactMesh mesh : {makeSheet(), torus}) {
            const CompactMesh before(mesh);
            znTest::ChangeRecorder recorder(mesh);
            znUtil::Progress progress;
            if (at < 0) progress.cancel();
            progress.setObserver([&](double fraction, const char*) {
                if (fraction >= at) progress.cancel();
            });
            EXPECT_FALSE(reparameterizeMesh(mesh).flatten(progress)) << at;
            EXPECT_TRUE(recorder.changes().empty());
            EXPECT_TRUE(znTest::sameBits(mesh, before));
        }
    }
}

TEST(BoundaryWalk, FindsLoopsAndNamesFaults)
{
    using internal::BoundaryWalk;
    const CompactMesh sheet = makeSheet();
    OutputRecorder output;
    znUtil::Progress progress;
    zn::vector<BoundaryWalk::UnsortedEdge> edges;
    zn::vector<zn::vector<BoundaryWalk::Edge>> loops;
    EXPECT_EQ(BoundaryWalk(sheet).findBoundaryEdges(edges, progress), 24 * 17 + 18 * 23 + 23 * 17 - 4 * 3 - 5 * 2 - 15);
    EXPECT_EQ(BoundaryWalk(sheet).orderBoundaries(edges, loops), 2);
    EXPECT_EQ(loops[0].size() + loops[1].size(), edges.size());
    for (const auto& loop : loops)
        for (int i = 0; i < loop.size(); ++i) EXPECT_EQ(loop[i].end, loop[(i + 1) % loop.size()].start);

    loops.clear();
    edges = {{0, 1, 0, 0}, {2, 0, 0, 1}, {1, 2, 1, 0}, {2, 5, 1, 1}, {5, 6, 2, 0}, {6, 2, 2, 1}}; // two meet at 2
    EXPECT_EQ(BoundaryWalk(sheet).orderBoundaries(edges, loops), 2);

    const std::vector<std::pair<CompactMesh, std::string>> faults{
        {znTest::makeMesh(6, {{0, 1, 2}, {3, 3, 5}}), "E Found degenerate triangle 1 (3,3,5), mesh not changed. \n"},
        {znTest::makeMesh(5, {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}}), "E Invalid mesh, non-manifold triangle 2 (0,1,4) \n"},
        {znTest::makeMesh(4, {{0, 1, 2}, {0, 1, 3}}), "E Invalid mesh, reverse wound triangle 1 (0,1,3) \n"}};
    for (const auto& [mesh, message] : faults) {
        EXPECT_EQ(BoundaryWalk(mesh).findBoundaryEdges(edges, progress), -1);
        EXPECT_EQ(output.lines.back(), message);
    }
    const std::vector<std::pair<zn::vector<BoundaryWalk::UnsortedEdge>, std::string>> loopFaults{
        {{{0, 1, 0, 0}, {1, 2, 0, 1}}, "E Found an un-closed boundary, mesh not changed. \n"},
        {{{0, 1, 0, 0}, {1, 0, 0, 1}}, "E A degenerate boundary found, mesh not changed. \n"},
        {{{4, 4, 0, 0}}, "E A degenerate boundary found, mesh not changed. \n"}};
    for (const auto& [sides, message] : loopFaults) {
        zn::vector<BoundaryWalk::UnsortedEdge> list(sides);
        EXPECT_EQ(BoundaryWalk(sheet).orderBoundaries(list, loops), -1);
        EXPECT_EQ(output.lines.back(), message);
    }
}

TEST(UVDistortion, MeasuresCharts)
{
    CompactMesh grid = znTest::makeGrid(4, 3);
    grid.allocUVArray();
    for (int i = 0; i < 12; ++i) grid.getUVs()[i].set(2 * grid.getVertices()[i].x, -grid.getVertices()[i].y);
    MeshUVDistortion distortion = meshUVDistortion(grid);
    EXPECT_EQ(distortion.numFlipped, 12);
    EXPECT_DOUBLE_EQ(distortion.meanStretch, 2);
    EXPECT_DOUBLE_EQ(distortion.largestStretch, 2);
    EXPECT_DOUBLE_EQ(distortion.smallestScale, 1);
    EXPECT_EQ(distortion.seamLength, 0);

    // As narrow as can be, as on the surface and twice as wide.
    for (const float width : {1.0f, 2.0f}) {
        CompactMesh narrow = znTest::makeMesh(3, {{0, 1, 2}});
        narrow.getVertices()[2].set(5, 1e-12f, 0);
        narrow.allocUVArray();
        for (int i = 0; i < 3; ++i)
            narrow.getUVs()[i].set(narrow.getVertices()[i].x, width * narrow.getVertices()[i].y);
        EXPECT_NEAR(meshUVDistortion(narrow).meanStretch, width, 1e-3);
    }

    // One triangle is larger, one is a point, and the rest is as on the surface.
    zn::vector<MeshUV> corners;
    for (int corner = 0; corner < 36; ++corner) {
        const MeshVertex& place = grid.getVertices()[grid.getTrianglesRaw()[corner]];
        const float factor = corner < 3 ? 3 : corner < 6 ? 0 : 1;
        corners.append({factor * place.x, factor * place.y});
    }
    distortion = meshUVDistortion(grid, corners.data());
    EXPECT_EQ(distortion.numFlipped, 0);
    EXPECT_EQ(distortion.numCollapsed, 1);
    EXPECT_DOUBLE_EQ(distortion.largestStretch, 1);
    EXPECT_DOUBLE_EQ(distortion.largestScale / distortion.smallestScale, 3);
    EXPECT_DOUBLE_EQ(distortion.seamLength, 2 + std::sqrt(2.0)); // the two triangles' common edge and the second's two
}
