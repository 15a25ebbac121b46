#include "znGeom/editing/triangles.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"
#include "tests/support/tangles.h"

using namespace znGeom;
using znTest::toVector;

TEST(Triangulate, makesTheFanOfEachPolygonOnce)
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

    // Where triangles are, no polygons, or none of three corners, nothing happens.
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
