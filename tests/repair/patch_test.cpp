#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/repair/internal/fairing.h"
#include "znGeom/repair/internal/patch_edges.h"
#include "znGeom/topology/twin.h"

using namespace znGeom;
using znGeom::internal::PatchEdges;
using znLinear::Vector;
using znTest::Random;

namespace {

/// A grid with its vertices moved about, those on the border first.
void fillMoved(TopoMesh& mesh, int columns, int rows, double amount, std::uint64_t seed)
{
    CompactMesh grid = znTest::makeGrid(columns, rows);
    std::vector<int> numbers(size_t(columns * rows));
    int next = 0;
    Random random(seed);
    std::vector<TopoMeshVertex> vertices;
    for (const bool onBorder : {true, false})
        for (int v = 0; v < columns * rows; ++v) {
            const int x = v % columns, y = v / columns;
            if ((x == 0 || y == 0 || x == columns - 1 || y == rows - 1) != onBorder) continue;
            numbers[size_t(v)] = next++;
            const Vector moved(random.real(-1, 1), random.real(-1, 1), random.real(-1, 1));
            vertices.push_back(mesh.allocVertex(grid.getVertices()[v].asPoint() + amount * moved));
        }
    for (int t = 0; t < grid.getNumTriangles(); ++t) {
        const auto [a, b, c] = grid.getTriangles()[t].corners;
        const auto at = [&](int v) { return vertices[size_t(numbers[size_t(v)])]; };
        mesh.allocTriangle(at(a), at(b), at(c));
    }
    meshTwin(mesh);
}

std::vector<int> cornersOf(const TopoMesh& mesh)
{
    std::vector<int> corners;
    for (const TopoMeshFace face : facesOf(mesh))
        for (const TopoMeshEdge e : sidesOf(face)) corners.push_back(e->origin.number());
    return corners;
}

TEST(PatchEdges, SwapWhatPassesOverAllOfThemSwap)
{
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        TopoMesh patch, plain;
        for (TopoMesh* mesh : {&patch, &plain}) fillMoved(*mesh, 14, 11, 0.1 * double(seed % 8), seed);
        const std::vector<int> before = cornersOf(patch);
        PatchEdges edges(patch, 0);
        zn::set<TopoMeshEdge> all;
        Random random(seed);
        for (TopoMeshEdge a = patch.firstEdge(), b = plain.firstEdge(); a; a = a->listNext, b = b->listNext)
            if (a->twin && !edges.has(a) && !random.oneIn(9)) edges.insert(a), all.insert(b);
        MeshEdgeSwapper swapper;
        swapper.getVetoSignal().addCallback(MeshEdgeSwapper::minimizeOppositeAngleSum);
        edges.relaxAll(swapper);
        EXPECT_TRUE(meshSwapEdgesRepeatedly(plain, all, swapper) > 0 || seed % 8 == 0);
        EXPECT_EQ(cornersOf(patch), cornersOf(plain)) << seed;
        EXPECT_TRUE(znTest::checkTopology(patch));
    }
}

TEST(Fairing, GoesInStepsWhereNothingHoldsThePatch)
{
    for (const bool isCancelled : {false, true}) {
        TopoMesh mesh;
        fillMoved(mesh, 12, 9, 0.3, 1);
        std::vector<TopoMeshVertex> inside;
        std::vector<znLinear::Point> before;
        for (const TopoMeshVertex v : verticesOf(mesh))
            if (!v.onBoundary()) inside.push_back(v), before.push_back(v.point());
        // Neighbours on the boundary don't count, and what is left has its solution where all is in one place.
        znUtil::Progress progress;
        if (isCancelled) progress.cancel();
        internal::fairVertices(mesh, inside, progress);
        for (size_t i = 0; i < inside.size(); ++i) {
            const znLinear::Point expected = isCancelled ? before[i] : inside[0].point();
            EXPECT_NEAR(distance(inside[i].point(), expected), 0, isCancelled ? 0 : 1e-6);
        }
    }
}

TEST(Fairing, LeavesVerticesBesideAPlaceThatIsNotANumber)
{
    TopoMesh mesh;
    fillMoved(mesh, 7, 7, 0.1, 2);
    std::vector<TopoMeshVertex> inside;
    for (const TopoMeshVertex v : verticesOf(mesh))
        if (!v.onBoundary() && v.number() > 30) inside.push_back(v);
    const znLinear::Point before = inside[0].point();
    znUtil::Progress progress;
    TopoMeshVertex fixed = inside[0]->edge->next->origin;
    for (const TopoMeshEdge e : outgoingOf(inside[0]))
        if (endOf(e).number() <= 30 && !endOf(e).onBoundary()) fixed = endOf(e);
    const znLinear::Point place = fixed.point();
    mesh.setPoint(fixed, znLinear::Point(place.x, double(NAN), place.z));
    internal::fairVertices(mesh, inside, progress);
    EXPECT_EQ(distance(inside[0].point(), before), 0);
    mesh.setPoint(fixed, place);
    internal::fairVertices(mesh, inside, progress);
    EXPECT_GT(distance(inside[0].point(), before), 0);
}

} // namespace
