#include "znGeom/topology/topo_point.h"

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

/// Two triangles over the diagonal b to c, of any size and anywhere.
struct Pair
{
    TopoMesh mesh;
    TopoMeshVertex a, b, c, d;
    TopoMeshFace left, right;

    explicit Pair(double size = 1, double shift = 0)
        : a(at(0, 0, size, shift)), b(at(1, 0, size, shift)), c(at(0, 1, size, shift)), d(at(1, 1, size, shift)),
          left(mesh.allocTriangle(a, b, c)), right(mesh.allocTriangle(b, d, c))
    {}
    TopoMeshVertex at(double x, double y, double size, double shift)
    {
        return mesh.allocVertex({shift + x * size, shift + y * size, shift});
    }
};

TopoMeshCoord coordOf(TopoMeshFace face, double w0, double w1, double w2)
{
    TopoMeshCoord coord;
    coord.w0 = w0, coord.w1 = w1, coord.w2 = w2, coord.face = face;
    return coord;
}

} // namespace

TEST(TopoPoint, ExactWeightsClassifyExactlyAtAnySize)
{
    for (const double size : {1e-3, 1.0, 1e4})
        for (const double shift : {0.0, 1e6}) {
            const Pair p(size, shift);
            const double tol = znLinear::epsilonTol;
            const TopoMeshPoint corner(coordOf(p.left, 0, 1, 0), tol), side(coordOf(p.left, 0, 0.25, 0.75), tol),
                inside(coordOf(p.left, 0.2, 0.3, 0.5), tol);
            EXPECT_TRUE(corner.kind == 0 && corner.vertex == p.b && !corner.edge);
            EXPECT_TRUE(side.kind == 1 && side.edge == p.left->edge->next && !side.vertex);
            EXPECT_TRUE(inside.kind == 2 && !inside.vertex && !inside.edge);
        }
    // The tolerance is a distance, and strict.
    const Pair p;
    EXPECT_EQ(TopoMeshPoint(coordOf(p.left, 0.5, 0.25, 0.25), 0.25).kind, 2);
    EXPECT_EQ(TopoMeshPoint(coordOf(p.left, 0.5, 0.25, 0.25), 0.26).kind, 1);
    EXPECT_EQ(TopoMeshPoint(coordOf(p.left, 0.5, 0.25, 0.25), 0.26).edge, p.left->edge);
    // A point on a side stays on it where another side, or corner, is within the tolerance as well.
    EXPECT_EQ(TopoMeshPoint(coordOf(p.left, 0.3, 0, 0.7), 0.25).edge, p.left->edge->prev);
    EXPECT_EQ(TopoMeshPoint(coordOf(p.left, 0.1, 0.6, 0.3), 2).vertex, p.b);
}

TEST(TopoPoint, CoordinatesRoundTrip)
{
    const Pair p;
    TopoMeshCoord coord;
    EXPECT_TRUE(coord.setFromPoint(p.left, Point(0.25, 0.5, 7)) && coord.face == p.left);
    EXPECT_TRUE(coord.w0 == 0.25 && coord.w1 == 0.25 && coord.w2 == 0.5);
    EXPECT_EQ(coord.evaluate(), Point(0.25, 0.5, 0));
    EXPECT_TRUE(coord.setFromPoint(p.left, Point(3, 0, 0)) && coord.w1 == 3);
    Pair flat(0.0);
    EXPECT_FALSE(coord.setFromPoint(flat.left, Point(1, 1, 1)));
    EXPECT_EQ(coord.w0, 0);
}

TEST(TopoPoint, PointsKnowTheirFacesAndEquals)
{
    const Pair p;
    const TopoMeshEdge diagonal = TopoMesh::findEdge(p.b, p.c);
    ASSERT_TRUE(diagonal->twin);
    const TopoMeshPoint onDiagonal(diagonal, p.left, 0.75, 0.25), across(diagonal->twin, p.right, 0.25, 0.75);
    EXPECT_EQ(onDiagonal.position, Point(0.75, 0.25, 0));
    EXPECT_TRUE(onDiagonal.equivalent(across) && !onDiagonal.onBoundary());
    EXPECT_FALSE(onDiagonal.equivalent(TopoMeshPoint(diagonal, p.left, 0.7, 0.3)));
    double origin = 0, end = 0;
    across.getEdgeWeights(origin, end);
    EXPECT_TRUE(origin == 0.25 && end == 0.75);

    const TopoMeshPoint atA(p.a, p.left), atD(p.d, {}), inRight(coordOf(p.right, 0.2, 0.4, 0.4), 1e-6);
    EXPECT_EQ(onDiagonal.adjacent(atA), p.left);
    EXPECT_EQ(onDiagonal.adjacent(atD), p.right);
    EXPECT_EQ(onDiagonal.adjacent(across), p.left); // its own face first
    EXPECT_EQ(atD.adjacent(inRight), p.right);
    EXPECT_FALSE(atA.adjacent(inRight));
    EXPECT_TRUE(atA.onBoundary() && atD.equivalent(TopoMeshPoint(p.d, p.right)) && !inRight.onBoundary());
}
