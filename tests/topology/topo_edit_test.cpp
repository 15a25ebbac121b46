// What each operation promises about handles; that it leaves the mesh whole is the random test's concern as well.
#include <set>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/topology/twin.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

/// Everything that a swap may change, of every element in order.
std::vector<std::array<int, 5>> linksOf(const TopoMesh& mesh)
{
    std::vector<std::array<int, 5>> links;
    for (const auto e : edgesOf(mesh))
        links.push_back({e->origin.number(), e->next.number(), e->prev.number(), e->twin ? e->twin.number() : -1,
                         e->face.number()});
    for (const auto f : facesOf(mesh)) links.push_back({f->edge.number()});
    return links;
}

struct Grid
{
    TopoMesh mesh;
    int columns;
    std::vector<TopoMeshVertex> v;

    Grid(int columns_, int rows) : columns(columns_)
    {
        CompactMesh grid;
        makeGrid(grid, columns, rows);
        fill(mesh, grid);
        meshTwin(mesh);
        v = listed(verticesOf(mesh));
    }
    TopoMeshVertex at(int column, int row) const { return v[static_cast<size_t>(row * columns + column)]; }
    TopoMeshEdge edge(int c0, int r0, int c1, int r1) const { return TopoMesh::findEdge(at(c0, r0), at(c1, r1)); }
};

} // namespace

TEST(TopoEdit, TwoSwapsRestoreEveryLink)
{
    TopoMesh mesh;
    CompactMesh sphere;
    makeSphere(sphere, 2);
    fill(mesh, sphere);
    Random random(3);
    int swapped = 0;
    for (int round = 0; round < 400; ++round) {
        const auto edges = listed(edgesOf(mesh));
        const TopoMeshEdge e = edges[static_cast<size_t>(random.below(static_cast<int>(edges.size())))];
        const auto before = linksOf(mesh);
        if (!mesh.swapEdge(e)) {
            EXPECT_EQ(linksOf(mesh), before);
            continue;
        }
        EXPECT_NE(linksOf(mesh), before);
        EXPECT_TRUE(mesh.swapEdge(e));
        EXPECT_EQ(linksOf(mesh), before);
        swapped += mesh.swapEdge(e); // and from here on
    }
    EXPECT_GT(swapped, 200);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoEdit, ASwapIsRefusedWhereTheOtherDiagonalExistsOrNoneCan)
{
    TopoMesh tetrahedron;
    std::vector<TopoMeshVertex> v;
    for (int i = 0; i < 4; ++i) v.push_back(tetrahedron.allocVertex({double(i == 1), double(i == 2), double(i == 3)}));
    for (const auto& t : {std::array{0u, 2u, 1u}, {0u, 1u, 3u}, {1u, 2u, 3u}, {0u, 3u, 2u}})
        tetrahedron.allocTriangle(v[t[0]], v[t[1]], v[t[2]]);
    ASSERT_EQ(countBoundary(tetrahedron), 0);
    for (const auto e : edgesOf(tetrahedron)) EXPECT_FALSE(tetrahedron.swapEdge(e));

    // A collapse makes two triangles back to back, whose diagonals join a vertex to itself; a second takes all away.
    tetrahedron.collapseEdge(tetrahedron.firstEdge());
    EXPECT_TRUE(checkTopology(tetrahedron));
    EXPECT_EQ(tetrahedron.numFaces(), 2);
    for (const auto e : edgesOf(tetrahedron)) EXPECT_FALSE(tetrahedron.swapEdge(e));
    tetrahedron.collapseEdge(tetrahedron.firstEdge());
    EXPECT_EQ(tetrahedron.numFaces() + tetrahedron.numEdges(), 0);
    EXPECT_TRUE(tetrahedron.numVertices() == 2);
    EXPECT_TRUE(checkTopology(tetrahedron));
}

TEST(TopoEdit, ACollapseKeepsTheHalfEdgesItSaysItKeeps)
{
    Grid grid(5, 5);
    const TopoMeshEdge e = grid.edge(2, 2, 3, 2), t = e->twin;
    const TopoMeshEdge kept[] = {e->prev->twin, t->prev->twin}, gone[] = {e->next->twin, t->next->twin};
    const TopoMeshEdge after[] = {e->next, t->next};
    const TopoMeshFace beyond[] = {gone[0]->face, gone[1]->face};
    const TopoMeshVertex origin = e->origin, end = grid.at(3, 2), apex[] = {e->prev->origin, t->prev->origin};
    kept[0].setMetadata(2, 4.0);
    const int faces = grid.mesh.numFaces(), edges = grid.mesh.numEdges();
    EXPECT_EQ(grid.mesh.collapseEdge(e), end);
    EXPECT_TRUE(checkTopology(grid.mesh));
    EXPECT_EQ(grid.mesh.numFaces(), faces - 2);
    EXPECT_EQ(grid.mesh.numEdges(), edges - 6);
    EXPECT_FALSE(origin->edge);
    EXPECT_EQ(end->point, Point(3, 2, 0)); // the caller's to move
    for (const int side : {0, 1}) {
        EXPECT_EQ(kept[side]->twin, after[side]);
        EXPECT_TRUE(after[side]->face == beyond[side] && after[side]->origin == apex[side]);
        EXPECT_FALSE(gone[side]->face);
    }
    EXPECT_EQ(after[0]->metadata[2].asDouble(), 4.0);
}

TEST(TopoEdit, CollapsesAndDeletesWhereManyFansTouchAtTheCostOfOne)
{
    // A chain of triangles that share single corners, a loose one at each corner: what collapses gathers all of these.
    constexpr int length = 250'000;
    TopoMesh mesh;
    std::vector<TopoMeshEdge> chain;
    TopoMeshVertex from = mesh.allocVertex({0, 0, 0});
    for (int i = 1; i <= length; ++i) {
        const TopoMeshVertex to = mesh.allocVertex({double(i), 0, 0}), apex = mesh.allocVertex({double(i), 1, 0}),
                             left = mesh.allocVertex({double(i), 0, 1}), right = mesh.allocVertex({double(i), 1, 1});
        chain.push_back(mesh.allocTriangle(from, to, apex)->edge);
        mesh.allocTriangle(from, left, right);
        from = to;
    }
    for (const TopoMeshEdge e : chain) mesh.collapseEdge(e);
    EXPECT_EQ(mesh.numFaces(), length);
    const TopoMeshVertex hub = mesh.firstFace()->edge->origin;
    EXPECT_EQ(hub.valence(), length);
    EXPECT_EQ(hub->point, Point(length, 0, 0));
    while (mesh.numFaces() > 0) mesh.deleteFace(mesh.firstFace());
    EXPECT_EQ(hub.valence(), 0);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoEdit, CollapsesOnTheBoundary)
{
    // The diagonal of a square of two triangles: nothing is left but the corners.
    Grid square(2, 2);
    const TopoMeshEdge diagonal = square.edge(0, 0, 1, 1) ? square.edge(0, 0, 1, 1) : square.edge(1, 0, 0, 1);
    const TopoMeshEdge inner = diagonal ? diagonal : square.mesh.firstEdge();
    square.mesh.collapseEdge(inner);
    EXPECT_TRUE(square.mesh.numFaces() == 0 && square.mesh.numEdges() == 0 && square.mesh.numVertices() == 3);
    EXPECT_TRUE(checkTopology(square.mesh));

    // A boundary half-edge: the end survives where it stands, the outer sides become one edge.
    Grid grid(4, 4);
    const TopoMeshEdge rim = grid.edge(1, 0, 2, 0) ? grid.edge(1, 0, 2, 0) : grid.edge(2, 0, 1, 0);
    const TopoMeshVertex survivor = rim->next->origin;
    const Point place = survivor->point;
    const TopoMeshEdge left = rim->prev->twin;
    EXPECT_EQ(grid.mesh.contractEdge(rim), survivor);
    EXPECT_TRUE(survivor->point == place && left->twin && left->origin == survivor);
    EXPECT_TRUE(checkTopology(grid.mesh));
}

TEST(TopoEdit, DeletingAVertexLeavesItsRing)
{
    for (const bool interior : {true, false}) {
        Grid grid(5, 5);
        const TopoMeshVertex v = interior ? grid.at(2, 2) : grid.at(2, 0);
        std::vector<TopoMeshEdge> ring;
        for (TopoMeshEdgeVertexIterator it(v); it.valid(); it.next()) ring.push_back(it.edge->next);
        std::vector<TopoMeshEdge> outer;
        for (const auto e : ring) outer.push_back(e->twin);
        const int edges = grid.mesh.numEdges(), valence = v.valence();
        const TopoMeshFace face = grid.mesh.deleteVertex(v);
        EXPECT_EQ(face.numVertices(), valence + (interior ? 0 : 1));
        EXPECT_EQ(grid.mesh.numEdges(), edges - 2 * valence + (interior ? 0 : 1));
        for (size_t i = 0; i < ring.size(); ++i) EXPECT_TRUE(ring[i]->face == face && ring[i]->twin == outer[i]);
        EXPECT_TRUE(checkTopology(grid.mesh));
    }
    // A vertex put into a triangle and taken out again leaves the triangle, in a new record, within its old sides.
    Grid grid(3, 3);
    const TopoMeshFace f = grid.mesh.firstFace();
    const auto sides = listed(sidesOf(f));
    const TopoMeshVertex middle = grid.mesh.subdivideFace(f, Point(0.3, 0.3, 0));
    EXPECT_EQ(middle.valence(), 3);
    EXPECT_EQ(f->edge, sides[0]);
    const TopoMeshFace back = grid.mesh.deleteVertex(middle);
    for (const auto side : sides) EXPECT_EQ(side->face, back);
    EXPECT_EQ(back.numVertices(), 3);

    // The tip of a spike is removed with its face.
    TopoMesh spike;
    const auto a = spike.allocVertex({}), b = spike.allocVertex({1, 0, 0}), c = spike.allocVertex({0, 1, 0});
    spike.allocTriangle(a, b, c);
    EXPECT_FALSE(spike.deleteVertex(c));
    EXPECT_TRUE(spike.numFaces() == 0 && spike.numVertices() == 2 && !a->edge);
    EXPECT_TRUE(checkTopology(spike));
    EXPECT_FALSE(spike.deleteVertex(a));
    EXPECT_EQ(spike.numVertices(), 1);
}

TEST(TopoEdit, DeletingAnEdgeMergesIntoTheFaceOfItsHalf)
{
    Grid grid(3, 3);
    const TopoMeshEdge e = grid.edge(1, 1, 1, 2), t = e->twin;
    const TopoMeshFace kept = e->face;
    const TopoMeshEdge others[] = {e->next, e->prev, t->next, t->prev};
    EXPECT_TRUE(grid.mesh.deleteEdge(e));
    for (const auto other : others) EXPECT_EQ(other->face, kept);
    EXPECT_EQ(kept.numVertices(), 4);
    EXPECT_TRUE(checkTopology(grid.mesh));
    EXPECT_FALSE(grid.mesh.deleteEdge(grid.edge(0, 0, 1, 0) ? grid.edge(0, 0, 1, 0) : grid.edge(1, 0, 0, 0)));
}

TEST(TopoEdit, SubdividingAnEdgeKeepsItAtItsOrigin)
{
    Grid grid(3, 3);
    const TopoMeshEdge e = grid.edge(1, 1, 1, 2), t = e->twin;
    const TopoMeshVertex a = e->origin, b = t->origin;
    const TopoMeshVertex far = grid.mesh.subdivideEdge(e, Point(1, 1.8, 0));
    const TopoMeshEdge rest = e->next;
    EXPECT_TRUE(e->origin == a && e->twin == t && t->origin == far && rest->origin == far && rest->next->origin == b);
    EXPECT_TRUE(rest->twin->origin == b && rest->twin->next == t);
    // Nearer and nearer points along the same half-edge.
    const TopoMeshVertex near = grid.mesh.subdivideEdge(e, Point(1, 1.4, 0));
    EXPECT_TRUE(e->next->origin == near && e->next->next == rest && near.valence() == 2);
    EXPECT_EQ(e->face.numVertices(), 5);
    EXPECT_EQ(t->face.numVertices(), 5);
    EXPECT_TRUE(checkTopology(grid.mesh));
}

TEST(TopoEdit, AFaceIsCutAlongAPath)
{
    TopoMesh mesh;
    zn::vector<TopoMeshVertex> v;
    for (int i = 0; i < 6; ++i) v.append(mesh.allocVertex({std::cos(double(i)), std::sin(double(i)), 0}));
    const TopoMeshFace f = mesh.allocFace(v);
    const auto old = listed(sidesOf(f));
    const TopoMeshFace created = mesh.subdivideFace(f, v[1], v[3], {Point(1, 2, 3), Point(4, 5, 6)});
    // The new face has the sides 1 and 2, the old one the rest and the way from 1 to 3.
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(old[i]->face, i == 1 || i == 2 ? created : f);
    EXPECT_TRUE(f.numVertices() == 7 && created.numVertices() == 5 && f->edge == old[0]);
    const TopoMeshEdge path = f.adjacent(v[1]);
    EXPECT_EQ(path->next->origin->point, Point(1, 2, 3));
    EXPECT_EQ(path->next->next->origin->point, Point(4, 5, 6));
    EXPECT_TRUE(path->next->next->next->origin == v[3] && path->twin->face == created);

    const TopoMeshEdge chord = mesh.subdivideFace(f, v[5], v[3]); // the first half-edge goes to the new face
    EXPECT_TRUE(chord->face == f && chord->origin == v[5] && f->edge == chord && old[0]->face == chord->twin->face);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoEdit, SplitsKeepTheSideOfTheirHalfEdgeAndMergesUndoThem)
{
    // A strip across which an edge runs from boundary to boundary.
    Grid strip(4, 2);
    const TopoMeshEdge e = strip.edge(1, 0, 1, 1), t = e->twin;
    const TopoMeshVertex a = e->origin, b = t->origin;
    const auto before = linksOf(strip.mesh);
    const int vertices = strip.mesh.numVertices();
    strip.mesh.splitEdge(e);
    EXPECT_TRUE(!e->twin && !t->twin && e->origin == a && e->next->origin == b);
    EXPECT_TRUE(checkTopology(strip.mesh));
    EXPECT_TRUE(t->origin != b && t->origin->point == b->point && strip.mesh.numVertices() == vertices + 2);
    strip.mesh.splitEdge(e); // does nothing on a boundary half-edge
    strip.mesh.mergeVertices(e, t);
    EXPECT_TRUE(strip.mesh.numVertices() == vertices && linksOf(strip.mesh) == before);
    EXPECT_TRUE(checkTopology(strip.mesh));

    Grid grid(5, 5);
    const TopoMeshEdge inward = grid.edge(2, 0, 2, 1);
    const TopoMeshVertex v = inward->origin, far = inward->next->origin;
    const TopoMeshVertex copy = grid.mesh.splitVertex(v, inward);
    EXPECT_TRUE(copy && inward->origin == v && !inward->twin && copy->point == v->point);
    EXPECT_TRUE(checkTopology(grid.mesh));
    EXPECT_TRUE(far.onBoundary() && copy.valence() + v.valence() == 3);

    const TopoMeshEdge in = grid.edge(2, 3, 2, 2), out = grid.edge(2, 2, 3, 2), back = in->twin;
    const TopoMeshVertex middle = out->origin;
    grid.mesh.splitVertex(in, out);
    EXPECT_TRUE(out->origin == middle && in->next->origin == middle && back->origin != middle);
    EXPECT_TRUE(!in->twin && !out->twin && back->origin->point == middle->point);
    EXPECT_TRUE(checkTopology(grid.mesh));
}

TEST(TopoEdit, VerticesWhereFansOnlyTouchMergeWhole)
{
    // Two triangles that share one vertex, which is removed: both must follow.
    TopoMesh mesh;
    std::vector<TopoMeshVertex> v;
    for (int i = 0; i < 8; ++i) v.push_back(mesh.allocVertex({double(i), 0, 0}));
    mesh.allocTriangle(v[0], v[1], v[2]);
    mesh.allocTriangle(v[0], v[3], v[4]);
    const TopoMeshEdge dying = TopoMesh::findEdge(v[0], v[1]);
    mesh.allocTriangle(v[5], v[6], v[7]);
    const TopoMeshEdge survivor = TopoMesh::findEdge(v[5], v[6]);
    ASSERT_EQ(v[0].valence(), 2);
    mesh.mergeVertices(survivor, dying); // v[0] becomes v[6], v[1] becomes v[5]
    EXPECT_TRUE(checkTopology(mesh));
    EXPECT_EQ(v[6].valence(), 3);
    EXPECT_TRUE(survivor->twin == dying && mesh.numVertices() == 6);
    mesh.deleteVertex(v[6]);
    EXPECT_TRUE(mesh.numFaces() == 1);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoEdit, MergingTwoSidesOfAQuadMakesATube)
{
    TopoMesh mesh;
    zn::vector<TopoMeshVertex> v;
    for (int i = 0; i < 4; ++i) v.append(mesh.allocVertex({double(i), 0, 0}));
    const TopoMeshFace quad = mesh.allocFace(v);
    const TopoMeshEdge a = quad->edge, b = a->next->next;
    mesh.mergeVertices(a, b);
    EXPECT_TRUE(a->twin == b && mesh.numVertices() == 2 && v[0].isAlive() && v[1].isAlive() && !v[2].isAlive());
    EXPECT_TRUE(endOf(a->next) == a->next->origin && !a->next->twin && !b->next->twin); // its rims
    EXPECT_TRUE(checkTopology(mesh));
    mesh.mergeVertices(a, b->next); // one has a twin
    EXPECT_EQ(mesh.numVertices(), 2);
    mesh.collapseEdge(a);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoEdit, CollapsesSwapsAndDeletionsTakeNoMemory)
{
    CompactMesh sphere;
    makeSphere(sphere, 3);
    TopoMesh mesh;
    fill(mesh, sphere);
    meshTwin(mesh);
    Random random(7);
    const auto edges = listed(edgesOf(mesh));
    mesh.deleteVertex(mesh.firstVertex()); // takes the block for the faces that deletions make
    const long before = numAllocations();
    for (int i = 0; i < 200; ++i) {
        const TopoMeshEdge e = edges[static_cast<size_t>(random.below(static_cast<int>(edges.size())))];
        if (!e.isAlive()) continue;
        if (i % 3 == 0 && TopoMesh::canCollapse(e)) mesh.collapseEdge(e);
        if (i % 3 == 1) mesh.swapEdge(e);
        if (i % 3 == 2) mesh.deleteVertex(e->origin);
    }
    EXPECT_EQ(numAllocations(), before);
    EXPECT_TRUE(checkTopology(mesh));
}

namespace {

/// A copy with the same numbers, of which half-edge `number` in list order has been collapsed: whether that is a closed
/// surface of the same topology, every edge of which joins two vertices that no other one joins.
bool staysASurface(const TopoMesh& mesh, size_t number)
{
    TopoMesh copy;
    std::vector<TopoMeshVertex> made(static_cast<size_t>(mesh.vertexNumbers()));
    for (const auto v : verticesOf(mesh)) made[static_cast<size_t>(v.number())] = copy.allocVertex(v->point);
    for (const auto f : facesOf(mesh)) {
        zn::vector<TopoMeshVertex> corners;
        for (const auto side : sidesOf(f)) corners.append(made[static_cast<size_t>(side->origin.number())]);
        copy.allocFace(corners);
    }
    meshTwin(copy);
    copy.collapseEdge(listed(edgesOf(copy))[number]);
    std::set<std::pair<TopoMeshVertex, TopoMeshVertex>> joined;
    for (const auto e : edgesOf(copy))
        if (e->origin == endOf(e) || !e->twin || !joined.emplace(e->origin, endOf(e)).second) return false;
    for (const auto v : verticesOf(copy))
        if (v.valence() == 0 || listed(fanOf(v)).size() != listed(outgoingOf(v)).size()) return false;
    const auto euler = [](const TopoMesh& m) { return m.numVertices() - m.numEdges() / 2 + m.numFaces(); };
    return euler(copy) == euler(mesh);
}

} // namespace

TEST(TopoEdit, TheLinkTestTellsWhatACollapseDoes)
{
    CompactMesh torus;
    makeTorus(torus, 6, 4);
    Random random(5);
    TopoMesh mesh;
    fill(mesh, torus);
    meshTwin(mesh);
    int refused = 0;
    for (bool any = true; any;) {
        std::vector<TopoMeshEdge> possible;
        size_t number = 0;
        for (const auto f : facesOf(mesh))
            for (const auto side : sidesOf(f)) {
                const bool stays = staysASurface(mesh, number++);
                EXPECT_EQ(TopoMesh::canCollapse(side), stays) << mesh.numFaces() << " faces";
                if (stays)
                    possible.push_back(side);
                else
                    ++refused;
            }
        any = !possible.empty();
        if (any) mesh.collapseEdge(possible[static_cast<size_t>(random.below(static_cast<int>(possible.size())))]);
        ASSERT_TRUE(checkTopology(mesh));
    }
    EXPECT_GT(refused, 100);
    EXPECT_GE(mesh.numVertices(), 7); // a torus takes no fewer
}
