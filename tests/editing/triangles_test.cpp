#include "znGeom/editing/triangles.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

using namespace znGeom;

namespace {

CompactMesh makePolygons(const std::vector<int>& lengths, const std::vector<int>& points)
{
    CompactMesh mesh;
    mesh.resizeVertexArray(8);
    mesh.allocNormalArray();
    mesh.allocUVArray();
    mesh.resizePolyArrays(static_cast<int>(points.size()), static_cast<int>(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), mesh.getPolyLengths());
    std::copy(points.begin(), points.end(), mesh.getPolyPoints());
    return mesh;
}

} // namespace

TEST(Triangulate, makesTheFanOfEachPolygon)
{
    CompactMesh mesh = makePolygons({4, 2, 3, 0, 5}, {0, 1, 2, 3, 6, 7, 3, 2, 4, 0, 2, 4, 6, 7});
    const znTest::ChangeRecorder changes(mesh);
    Remap remap(1, 1);
    meshTriangulate(mesh, remap);

    const int corners[] = {0, 1, 2, 0, 2, 3, 3, 2, 4, 0, 2, 4, 0, 4, 6, 0, 6, 7}, polygons[] = {0, 0, 2, 4, 4, 4};
    ASSERT_EQ(mesh.getNumTriangles(), 6);
    EXPECT_TRUE(std::equal(std::begin(corners), std::end(corners), mesh.getTrianglesRaw()));
    ASSERT_EQ(remap.getDomainSize(), 6);
    EXPECT_EQ(remap.range, 5);
    EXPECT_TRUE(std::equal(std::begin(polygons), std::end(polygons), remap.data()));
    EXPECT_EQ(mesh.getNumPolys(), 5);
    EXPECT_TRUE(mesh.getNormals() && mesh.getUVs());
    ASSERT_EQ(changes.changes().size(), 1u);
    EXPECT_EQ(changes.changes()[0].type, MeshModification::TopologyChanged);
}

TEST(Triangulate, leavesAMeshThatHasTrianglesOrNoPolygons)
{
    CompactMesh none, both = makePolygons({3}, {0, 1, 2});
    const int corners[] = {5, 6, 7};
    both.copyTriangles(1, corners);
    const znTest::ChangeRecorder ofNone(none), ofBoth(both);
    meshTriangulate(none);
    meshTriangulate(both);
    EXPECT_EQ(none.getNumTriangles(), 0);
    EXPECT_EQ(both.getTriangles()[0][0], 5);
    EXPECT_TRUE(ofNone.changes().empty() && ofBoth.changes().empty());
}
