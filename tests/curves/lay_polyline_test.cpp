#include "znGeom/curves/lay_polyline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "tests/support/tangles.h"
#include "znGeom/curves/curve_topology.h"
#include "znGeom/curves/plane_section.h"
#include "znGeom/scopes/convert_rep.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Plane;
using znLinear::Point;
using znLinear::Vector;

namespace {

/// How many curves a run of coordinates makes on the half-edge mesh: one, unless it leaps somewhere.
int countPieces(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshCurve& curve)
{
    BitVector triangles(mesh.getNumTriangles()), vertices(mesh.getNumVertices());
    triangles.setAllBits();
    vertices.setAllBits();
    MeshConvertRep rep(mesh, triangles, vertices, adjTris);
    rep.extract();
    std::deque<TopoMeshCoord> coords;
    for (const MeshCoord& coord : curve.coords) coords.push_back(rep.copy(coord));
    if (curve.closed) coords.push_back(coords.front());
    TopoMeshCurves curves;
    MeshCurveTopology::convert(curves, coords, 1e-9);
    return curves.size();
}

Plane throughRandomly(Random& random)
{
    const Point point = random.point(0.5);
    return {point, random.direction()};
}

Point placeOf(const CompactMesh& mesh, const MeshCoord& coord)
{
    return coord.evaluate(mesh.getVertices(), mesh.getTriangles());
}

} // namespace

TEST(LayPolyline, FollowsTheSurfaceFromPointToPoint)
{
    CompactMesh torus;
    makeTorus(torus, 40, 25);
    const MeshAdjTris adjTris = adjTrisOf(torus);
    const MeshLayPolyline lay(torus, adjTris);
    Random random(3);
    for (int round = 0; round < 60; ++round) {
        zn::vector<Point> stroke;
        Point at = torus.getVertices()[random.below(torus.getNumVertices())].asPoint(); // begins at a vertex
        for (int i = 0; i < 6; ++i, at += random.vector(0.2)) stroke.append(at);
        const MeshLaidPolyline laid = lay(stroke, round % 2 == 0);
        if (!laid.curve) {
            EXPECT_TRUE(laid.lostPiece >= 0 && laid.lostPiece < 6);
            continue;
        }
        EXPECT_EQ(laid.curve->closed, round % 2 == 0);
        EXPECT_EQ(countPieces(torus, adjTris, *laid.curve), 1);
        EXPECT_GE(laid.farthestPoint, 0);
    }
    // On a sphere the way is that of a great circle.
    CompactMesh sphere;
    makeSphere(sphere, 5);
    const MeshAdjTris around = adjTrisOf(sphere);
    const MeshLaidPolyline quarter = MeshLayPolyline(sphere, around)({{2, 0.1, 0.2}, {0, 3, 0.1}}, false);
    ASSERT_TRUE(quarter.curve);
    const double angleBetween = angle(znLinear::Normal(2, 0.1, 0.2), znLinear::Normal(0, 3, 0.1));
    EXPECT_NEAR(quarter.curve->length(sphere), angleBetween, 5e-3);
    EXPECT_NEAR(quarter.farthestDistance, std::sqrt(9.01) - 1, 1e-3);
}

TEST(LayPolyline, RunsAlongEdgesAndTellsWhatIsLost)
{
    const CompactMesh grid = makeGrid(5, 5);
    const MeshAdjTris adjTris = adjTrisOf(grid);
    const MeshLayPolyline lay(grid, adjTris);
    // Along rows, the outermost ones too, diagonals, and through vertices: straight, whatever the order.
    for (const auto& [a, b] : {std::pair{Point(0, 0, 0), Point(4, 0, 0)},
                               {Point(4, 4, 0), Point(4, 0, 0)},
                               {Point(0, 2, 0), Point(4, 2, 0)},
                               {Point(0, 0, 0), Point(4, 4, 0)},
                               {Point(0, 4, 0), Point(4, 0, 0)},
                               {Point(0, 1, 0), Point(4, 3, 0)}})
        for (const auto& ends : {zn::vector<Point>{a, b}, zn::vector<Point>{b, a}}) {
            const MeshLaidPolyline laid = lay(ends, false);
            ASSERT_TRUE(laid.curve);
            EXPECT_NEAR(laid.curve->length(grid), distance(a, b), 1e-9);
            EXPECT_EQ(countPieces(grid, adjTris, *laid.curve), 1);
        }
    EXPECT_EQ(lay({{0, 0, 0}, {1, std::nan(""), 0}}, false).lostPoint, 1);
    EXPECT_EQ(lay({{1, 1, 0}, {1, 1, 0}}, false).curve->coords.size(), 1U);
    EXPECT_TRUE(lay({}, true).curve->coords.empty());

    CompactMesh annulus; // the straight way to the other side is missing
    makeAnnulus(annulus, 24);
    const MeshAdjTris ring = adjTrisOf(annulus);
    const MeshLaidPolyline lost = MeshLayPolyline(annulus, ring)({{1.5, 0, 0}, {1.6, 0, 0}, {-1.5, 0, 0}}, false);
    EXPECT_TRUE(!lost.curve && lost.lostPiece == 1);
}

TEST(LayPolyline, CancelsAtEveryReport)
{
    const CompactMesh grid = makeGrid(5, 5);
    const MeshAdjTris adjTris = adjTrisOf(grid);
    const MeshLayPolyline lay(grid, adjTris);
    zn::vector<Point> spiral;
    for (int i = 0; i < 200; ++i)
        spiral.append({2 + 0.009 * i * std::cos(0.1 * i), 2 + 0.009 * i * std::sin(0.1 * i), 0});
    bool isLaid = false;
    int cancelAt = 0;
    for (; !isLaid; ++cancelAt) {
        znUtil::Progress progress;
        int seen = 0;
        progress.setObserver([&](double, const char*) {
            if (++seen == cancelAt) progress.cancel();
        });
        if (cancelAt == 0) progress.cancel();
        const MeshLaidPolyline laid = lay(spiral, false, progress);
        isLaid = static_cast<bool>(laid.curve);
        EXPECT_EQ(isLaid, !progress.cancelled());
        EXPECT_TRUE(laid.lostPiece < 0 && laid.lostPoint < 0);
        EXPECT_EQ(laid.farthestPoint < 0, !isLaid);
    }
    EXPECT_GT(cancelAt, 10);
}

TEST(PlaneSection, FindsWholeCurves)
{
    CompactMesh torus;
    makeTorus(torus, 60, 30);
    const MeshAdjTris adjTris = adjTrisOf(torus);
    const auto flat = meshPlaneSection(torus, Plane({0, 0, 0}, znLinear::Normal(0, 0, 1)));
    ASSERT_EQ(flat.size(), 2); // through vertices all the way
    EXPECT_NEAR(flat[0]->length(torus) + flat[1]->length(torus), 4 * std::numbers::pi, 0.02);
    Random random(5);
    for (int round = 0; round < 40; ++round)
        for (const auto& curve : meshPlaneSection(torus, throughRandomly(random))) {
            EXPECT_TRUE(curve->closed);
            EXPECT_EQ(countPieces(torus, adjTris, *curve), 1);
        }
    EXPECT_EQ(meshPlaneSection(torus, Plane({5, 0, 0}, znLinear::Normal(1, 0, 0))).size(), 0);

    CompactMesh grid = makeGrid(6, 6);
    const auto open = meshPlaneSection(grid, Plane({2.5, 2.5, 0}, znLinear::Normal(2, 1, 0)));
    ASSERT_EQ(open.size(), 1);
    EXPECT_FALSE(open[0]->closed);
    EXPECT_NEAR(open[0]->length(grid), 2.5 * std::sqrt(5.0), 1e-6);
    // One vertex that is not a number parts the curve there.
    grid.getVertices()[14].z = std::nanf("");
    EXPECT_EQ(meshPlaneSection(grid, Plane({2.5, 2.5, 0}, znLinear::Normal(0, 1, 0))).size(), 2);

    CompactMesh cube; // the rim of a face that lies in the plane, seen from where the cube is below it
    makeCube(cube);
    const auto rim = meshPlaneSection(cube, Plane({0, 0, 1}, znLinear::Normal(0, 0, 1)));
    ASSERT_EQ(rim.size(), 1);
    EXPECT_NEAR(rim[0]->length(cube), 8, 1e-12);
    EXPECT_EQ(rim[0]->coords.size(), 4U);
    EXPECT_EQ(meshPlaneSection(cube, Plane({0, 0, -1}, znLinear::Normal(0, 0, 1))).size(), 0);
    EXPECT_NEAR(distance(placeOf(cube, rim[0]->coords[0]), {0, 0, 1}), std::sqrt(2.0), 1e-12);
}
