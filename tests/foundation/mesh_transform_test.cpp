#include "znGeom/foundation/mesh/mesh_transform.h"

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/foundation/linear/tolerance.h"

using namespace znGeom;
using namespace znLinear;
using Type = MeshModification;

TEST(MeshTransform, MovesPositionsAndTurnsNormals)
{
    znTest::Random random(1);
    CompactMesh mesh;
    znTest::makeTorus(mesh, 12, 8);
    meshComputeNormals(mesh);
    meshComputeTriangleNormals(mesh);
    AffineMatrixFlt matrix;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column) matrix[row][column] = float(random.real(-2, 2));
    if (matrix.det3x3() < 0) matrix.setRow(0, -matrix.row(0));
    CompactMesh moved = mesh;
    znTest::ChangeRecorder recorder(moved);
    meshTransform(moved, matrix);
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        // The normal of the moved triangle, and of its moved tangents.
        const Normal plain = meshTriNormal(moved.getVerticesRaw(), moved.getTriangles()[t].corners);
        EXPECT_NEAR(dot(plain.asVector(), moved.getTriangleNormals()[t].asVector()), 1, 1e-5);
    }
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const Point expected = mesh.getVertices()[v].asPoint() * AffineMatrix(matrix);
        EXPECT_NEAR(distance(expected, moved.getVertices()[v].asPoint()), 0, 1e-6);
        EXPECT_NEAR(moved.getNormals()[v].asVector().length(), 1, 1e-6);
    }
    ASSERT_EQ(recorder.changes().size(), 1u);
    EXPECT_EQ(recorder.changes()[0].type, Type::GeometryChanged);
    EXPECT_EQ(recorder.changes()[0].modified, (znTest::Change::Channels{Type::Normals, Type::TriangleNormals}));

    // The identity, or nearly, is no change: normals that are not of unit length stay as they are.
    CompactMesh still = mesh;
    still.getNormals()[3].x = 0, still.getNormals()[3].y = 0, still.getNormals()[3].z = 2;
    znTest::ChangeRecorder ofStill(still);
    AffineMatrixFlt nearly;
    nearly[3][0] = 0.5f * epsilonTolFlt;
    meshTransform(still, AffineMatrixFlt());
    meshTransform(still, nearly);
    EXPECT_TRUE(ofStill.changes().empty());
    EXPECT_EQ(still.getNormals()[3].z, 2);
    nearly[3][0] = 2 * epsilonTolFlt;
    meshTransform(still, nearly);
    EXPECT_EQ(ofStill.changes().size(), 1u);
    EXPECT_EQ(still.getNormals()[3].z, 1);

    // Without normals; a singular matrix; nothing at all.
    CompactMesh flat = znTest::makeGrid(3, 3), none;
    znTest::ChangeRecorder ofFlat(flat), ofNone(none);
    meshTransform(flat, AffineMatrixFlt(0.0f));
    meshTransform(none, matrix);
    EXPECT_EQ(flat.getVertices()[8].x, 0);
    EXPECT_EQ(flat.getNormals(), nullptr);
    EXPECT_EQ(ofFlat.changes().at(0).modified, znTest::Change::Channels{Type::TriangleNormals});
    EXPECT_TRUE(ofNone.changes().empty());

    PointMesh points = mesh;
    znTest::ChangeRecorder ofPoints(points);
    meshTransform(points, matrix);
    EXPECT_EQ(ofPoints.changes().at(0).modified, znTest::Change::Channels{Type::Normals});
    EXPECT_EQ(points.getVertices()[5].y, moved.getVertices()[5].y);
}
