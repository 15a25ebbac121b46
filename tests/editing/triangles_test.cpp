#include "znGeom/editing/triangles.h"

#include <cstdlib>
#include <memory>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/recorder.h"
#include "tests/support/tangles.h"
#include "znGeom/editing/mesh_swap.h"

using namespace znGeom;
using znTest::toVector;

TEST(Triangulate, MakesTheFanOfEachPolygonOnce)
{
    const std::vector<int> lengths{4, 2, 3, 0, 5}, points{0, 1, 2, 3, 6, 7, 3, 2, 4, 0, 2, 4, 6, 7};
    CompactMesh mesh;
    mesh.resizeVertexArray(8);
    mesh.allocNormalArray();
    mesh.allocUVArray();
    mesh.resizePolyArrays(14, 5);
    std::copy(lengths.begin(), lengths.end(), mesh.getPolyLengths());
    std::copy(points.begin(), points.end(), mesh.getPolyPoints());
    const znTest::ChangeRecorder changes(mesh);
    Remap remap(1, 1);
    meshTriangulate(mesh, remap);

    EXPECT_EQ(toVector(mesh.getTrianglesRaw(), 3 * mesh.getNumTriangles()),
              (std::vector<int>{0, 1, 2, 0, 2, 3, 3, 2, 4, 0, 2, 4, 0, 4, 6, 0, 6, 7}));
    EXPECT_EQ(toVector(remap.data(), remap.getDomainSize()), (std::vector<int>{0, 0, 2, 4, 4, 4}));
    EXPECT_EQ(remap.range, 5);
    EXPECT_EQ(mesh.getNumPolys(), 5);
    EXPECT_TRUE(mesh.getNormals() && mesh.getUVs());
    ASSERT_EQ(changes.changes().size(), 1u);
    EXPECT_EQ(changes.changes()[0].type, MeshModification::TopologyChanged);

    // Where there are triangles already, no polygons, or none with three corners, nothing happens.
    CompactMesh none;
    const znTest::ChangeRecorder ofNone(none);
    meshTriangulate(none);
    none.resizeVertexArray(2);
    none.resizePolyArrays(2, 1);
    none.getPolyLengths()[0] = 2;
    none.getPolyPoints()[0] = none.getPolyPoints()[1] = 1;
    meshTriangulate(none);
    mesh.resizeTriangleArray(1);
    meshTriangulate(mesh);
    EXPECT_TRUE(none.getNumTriangles() == 0 && mesh.getNumTriangles() == 1);
    EXPECT_TRUE(ofNone.changes().empty() && changes.changes().size() == 1);
}

TEST(TrianglesAsLines, AreTheSidesOnceInOrder)
{
    znTest::Random random(1);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        const CompactMesh mesh = round == 0 ? CompactMesh() : znTest::makeAnyMesh(random, round);
        std::set<std::pair<int, int>> expected; // a vertex may be both ends
        for (int side = 0; side < 3 * mesh.getNumTriangles(); ++side) {
            const MeshTriangle& triangle = mesh.getTriangles()[side / 3];
            expected.insert(std::minmax({triangle[side % 3], triangle[(side + 1) % 3]}));
        }
        int count = -1, *lines = &count;
        meshTrianglesAsLines(mesh, count, lines);
        const std::unique_ptr<int, void (*)(void*)> owner(lines, std::free);
        ASSERT_EQ(count, int(expected.size()));
        ASSERT_EQ(lines == nullptr, mesh.getNumTriangles() == 0);
        for (const auto& [low, high] : expected) {
            ASSERT_EQ(std::pair(lines[0], lines[1]), std::pair(low, high));
            lines += 2;
        }
    }
}

TEST(MeshSwap, NamesOnBothWhatEitherHas)
{
    CompactMesh a = znTest::makeMesh(3, {{{0, 1, 2}}}), b = znTest::makeMesh(5, {{{2, 3, 4}}, {{0, 1, 2}}});
    a.allocUVArray();
    a.resizeTriFanArrays(3, 1);
    a.resizePolyArrays(3, 1);
    b.allocTriangleNormalArray();
    b.resizeLineArray(2);
    b.allocAttributes("flow", 2);
    b.getSelectedTriangles().resize(2);
    znTest::ChangeRecorder ofA(a), ofB(b);
    meshSwap(a, b);
    EXPECT_TRUE(a.getNumVertices() == 5 && a.getNumTriangles() == 2 && a.getNumLines() == 2 && !a.getUVs());
    EXPECT_TRUE(a.getTriangleNormals() && a.getAttributes("flow") && a.getSelectedTriangles().getSize() == 2);
    EXPECT_TRUE(b.getUVs() && b.getNumTriFans() == 1 && b.getNumPolys() == 1 && b.getNumTriangles() == 1);
    using M = MeshModification;
    for (const znTest::ChangeRecorder* recorder : {&ofA, &ofB}) {
        ASSERT_EQ(recorder->changes().size(), 1u);
        const znTest::Change& change = recorder->changes()[0];
        EXPECT_TRUE(change.type == M::TopologyChanged && !change.hasVertexRemap && !change.hasTriangleRemap);
        EXPECT_EQ(change.modified,
                  (znTest::Change::Channels{M::TriangleNormals, M::UVs, M::StripsAndFans, M::Lines, M::Polys}));
        EXPECT_EQ(change.attributes, (std::vector<std::string>{"flow", "vertices", "uvs", "vertices"}));
        EXPECT_TRUE(change.valid.empty());
    }
}
