#include "znGeom/editing/delete_non_finite.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/recorder.h"
#include "tests/support/shapes.h"

using namespace znGeom;

namespace {

TEST(MeshDeleteNonFinite, TakesTrianglesAndWhatOnlyTheyUse)
{
    CompactMesh mesh = znTest::makeGrid(3, 3);
    mesh.resizeVertexArray(11);
    mesh.getVertices()[9].set(0.0f, 0.0f, NAN); // in no triangle
    mesh.getVertices()[10].set(7.0f, 7.0f, 7.0f);
    znTest::ChangeRecorder changes(mesh);
    EXPECT_EQ(meshDeleteNonFinite(mesh), 0);
    EXPECT_TRUE(changes.changes().empty());
    EXPECT_EQ(mesh.getNumVertices(), 11);

    mesh.getVertices()[0].x = -INFINITY;
    const int numAtCorner = 1 + (hasVertex(mesh.getTriangles()[1], 0) ? 1 : 0);
    EXPECT_EQ(meshDeleteNonFinite(mesh), numAtCorner);
    EXPECT_EQ(mesh.getNumTriangles(), 8 - numAtCorner);
    EXPECT_EQ(mesh.getNumVertices(), 9);
    EXPECT_EQ(mesh.getVertices()[8].x, 7.0f) << "one that nothing used is none of its business";
    EXPECT_EQ(changes.changes().size(), 1u);
    for (int v = 0; v < mesh.getNumVertices(); ++v) EXPECT_TRUE(isFinite(mesh.getVertices()[v]));
}

} // namespace
