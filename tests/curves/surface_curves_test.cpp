#include "znGeom/curves/surface_curves.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/shapes.h"
#include "tests/support/tangles.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

std::vector<int> strip(const CompactMesh& mesh)
{
    return toVector(mesh.getLineStripPoints(), mesh.getNumLineStripPoints());
}

std::vector<int> lines(const CompactMesh& mesh)
{
    return mesh.getNumLines() ? toVector(mesh.getLines()->ends, 2 * mesh.getNumLines()) : std::vector<int>();
}

using Numbers = std::vector<int>;

} // namespace

TEST(SurfaceCurves, StripsBecomeCurvesAndMeshes)
{
    const CompactMesh grid = makeGrid(4, 3);
    const MeshAdjTris adjTris = adjTrisOf(grid);
    const MeshSequence strips(zn::vector<int>{5, 6, 2, 5, 6, 10, 7}, zn::vector<int>{4, 2, 1});
    const auto curve = meshConvertLine(grid, adjTris, strips, 0);
    EXPECT_TRUE(curve->closed && curve->coords.size() == 4);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(curve->coords[i].evaluate(grid.getVertices(), grid.getTriangles()),
                  grid.getVertices()[strips.getStart(0)[i]].asPoint());

    const auto one = meshExtractLine(grid, strips, 0, false), all = meshExtractLines(grid, strips, true);
    EXPECT_EQ(one->getNumVertices(), 3); // the vertex that is met again is the same one
    EXPECT_EQ(strip(*one), (Numbers{0, 1, 2, 0}));
    EXPECT_EQ(lines(*one), (Numbers{0, 1, 1, 2, 2, 0}));
    EXPECT_EQ(all->getNumVertices(), 5); // shared by strips as well
    EXPECT_EQ(strip(*all), (Numbers{0, 1, 2, 0, 1, 3, 4}));
    EXPECT_EQ(lines(*all), (Numbers{0, 1, 1, 2, 2, 0, 0, 0, 1, 3, 3, 1, 4, 4}));
    EXPECT_EQ(all->getVertices()[3].asPoint(), grid.getVertices()[10].asPoint());
    EXPECT_EQ(meshExtractLines(grid, strips, false)->getNumLines(), 4);
    EXPECT_EQ(meshExtractLine(grid, MeshSequence(zn::vector<zn::vector<int>>(1)), 0, false)->getNumLines(), 0);
}

TEST(SurfaceCurves, CurvesBecomeMeshes)
{
    const CompactMesh grid = makeGrid(3, 3);
    MeshCoord coord;
    coord.triangle = 3;
    coord.weights[0] = coord.weights[1] = 0.5;
    for (const int count : {0, 1, 3})
        for (const bool closed : {false, true}) {
            const MeshCurve curve(std::deque<MeshCoord>(static_cast<std::size_t>(count), coord), closed);
            const auto mesh = meshExtractLine(grid, curve);
            EXPECT_EQ(mesh->getNumVertices(), count);
            EXPECT_EQ(strip(*mesh).size(), static_cast<std::size_t>(count));
            EXPECT_EQ(mesh->getNumLines(), closed ? count : std::max(count - 1, 0));
            EXPECT_TRUE(!closed || count == 0 || lines(*mesh).back() == 0);
            for (int i = 0; i < count; ++i)
                EXPECT_EQ(mesh->getVertices()[i].asPoint(), coord.evaluate(grid.getVertices(), grid.getTriangles()));
        }
}

TEST(SurfaceCurves, PlacesBetweenTwoLieOnTheirCommonTriangle)
{
    CompactMesh cube;
    makeCube(cube);
    const MeshAdjTris adjTris = adjTrisOf(cube);
    const auto at = [&](int triangle, double w0, double w1, double w2) {
        MeshCoord coord;
        coord.triangle = triangle;
        coord.weights[0] = w0, coord.weights[1] = w1, coord.weights[2] = w2;
        return coord;
    };
    const auto place = [&](const MeshCoord& coord) { return coord.evaluate(cube.getVertices(), cube.getTriangles()); };
    // Across every side of every triangle: the one place inside, the other on the side, told on the triangle behind it.
    int common = 0;
    for (int t = 0; t < 12; ++t)
        for (int s = 0; s < 12; ++s)
            for (int side = 0; side < 3 && s != t; ++side) {
                const MeshCoord inside = at(t, 0.2, 0.3, 0.5);
                MeshCoord onSide = at(s, 0.5, 0.5, 0.5);
                onSide.weights[side] = 0;
                const MeshCoord between = meshCoordInterpolate(cube, adjTris, 0.25, inside, 0.75, onSide, 1e-9);
                int shared = 0;
                for (int i = 0; i < 3; ++i)
                    shared += i != side && hasVertex(cube.getTriangles()[t], cube.getTriangles()[s][i]);
                EXPECT_EQ(between.valid(), shared == 2);
                if (!between.valid()) continue;
                ++common;
                EXPECT_EQ(between.triangle, t);
                EXPECT_NEAR(distance(place(between), combine(0.25, place(inside), 0.75, place(onSide))), 0, 1e-12);
            }
    EXPECT_EQ(common, 36);
    // Weights that don't add up to 1 lead off the surface, and back to the plane of the triangle.
    const MeshCoord a = at(0, 1, 0, 0), scaled = meshCoordInterpolate(cube, adjTris, 1, a, 1, a, 1e-9);
    EXPECT_NEAR(scaled.weights[0] + scaled.weights[1] + scaled.weights[2], 1, 1e-12);
    EXPECT_FALSE(meshCoordInterpolate(cube, adjTris, 1, MeshCoord(), 1, a, 1e-9).valid());
}
