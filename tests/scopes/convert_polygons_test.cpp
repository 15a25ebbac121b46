#include "znGeom/scopes/convert_polygons.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "tests/topology/polygon_meshes.h"
#include "znGeom/topology/orient_faces.h"

using namespace znGeom;
using namespace znTest;

namespace {

/// A mesh with some of its faces backwards, twinned anew.
void scramble(const TopoMesh& mesh, Random& random, TopoMesh& result)
{
    zn::vector<bool> reversed(mesh.faceNumbers(), false);
    for (bool& backwards : reversed) backwards = random.oneIn(2);
    CompactMesh flat;
    meshConvertPolygons(mesh, flat, reversed);
    meshConvertPolygons(flat, result);
}

/// After turning over what is told.
bool isConsistent(const TopoMesh& mesh, const zn::vector<bool>& reversed, TopoMesh& result)
{
    CompactMesh flat;
    meshConvertPolygons(mesh, flat, reversed);
    meshConvertPolygons(flat, result);
    for (const TopoMeshEdge e : edgesOf(result))
        if (e->twin && e->twin->origin == e->origin) return false;
    return true;
}

} // namespace

TEST(ConvertPolygons, GoesThereAndBack)
{
    TopoMesh mesh, again;
    addBox(mesh, 2);
    mesh.deleteEdge(mesh.firstFace()->edge->next); // a face of six sides
    mesh.allocVertex({9, 9, 9});
    CompactMesh flat, second;
    makeGrid(flat, 3, 3); // which goes
    flat.allocNormalArray();
    meshConvertPolygons(mesh, flat);
    EXPECT_EQ(flat.getNumVertices(), 27);
    EXPECT_EQ(flat.getNumPolys(), 23);
    EXPECT_EQ(flat.getNumTriangles(), 48);
    EXPECT_FALSE(flat.getNormals());
    meshConvertPolygons(flat, again);
    EXPECT_TRUE(checkTopology(again));
    EXPECT_EQ(countBoundary(again), 0);
    EXPECT_NEAR(volumeOf(again), 8, 1e-12);
    meshConvertPolygons(again, second);
    const auto same = [&](const int* a, const int* b, int count) { return std::equal(a, a + count, b); };
    EXPECT_TRUE(same(flat.getPolyPoints(), second.getPolyPoints(), flat.getNumPolyPoints()));
    EXPECT_TRUE(same(flat.getTrianglesRaw(), second.getTrianglesRaw(), 3 * flat.getNumTriangles()));

    // Triangles stay triangles.
    TopoMesh sheet;
    meshConvertPolygons(makeGrid(4, 3), sheet);
    meshConvertPolygons(sheet, second);
    EXPECT_EQ(second.getNumPolys(), 0);
    EXPECT_TRUE(same(second.getTrianglesRaw(), makeGrid(4, 3).getTrianglesRaw(), 36));
}

TEST(OrientFaces, MakesNeighboursAgree)
{
    Random random(6);
    for (int round = 0; round < 20; ++round) {
        TopoMesh box, scrambled, result;
        addBox(box, 3);
        addSquares(box, 4, 2);
        zn::vector<bool> reversed;
        EXPECT_TRUE(meshOrientFaces(box, reversed));
        EXPECT_EQ(std::count(reversed.begin(), reversed.end(), true), 0) << "what agrees stays";
        scramble(box, random, scrambled);
        EXPECT_TRUE(meshOrientFaces(scrambled, reversed));
        EXPECT_TRUE(isConsistent(scrambled, reversed, result));
        EXPECT_NEAR(volumeOf(result), 27, 1e-12) << "outward";
    }
    CompactMesh band;
    makeMobiusBand(band, 7);
    TopoMesh mesh;
    meshConvertPolygons(band, mesh);
    zn::vector<bool> reversed;
    EXPECT_FALSE(meshOrientFaces(mesh, reversed));
}
