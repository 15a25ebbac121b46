#include "znGeom/topology/subdivide.h"

#include <cmath>
#include <memory>
#include <unordered_map>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/shapes.h"
#include "tests/support/shared_meshes.h"
#include "tests/topology/polygon_meshes.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Normal;
using znLinear::ParamPlane;
using znLinear::Point;
using znLinear::Vector;

namespace {

using MeshPointer = std::unique_ptr<TopoMesh>;

MeshPointer subdivided(TopoMesh& mesh, TopoMemory* memory = nullptr)
{
    return MeshPointer(computeSubdivMesh(mesh, memory));
}

Point mean(std::initializer_list<Point> points)
{
    Vector sum;
    for (const Point& point : points) sum += point.asVector();
    return (sum / double(points.size())).asPoint();
}

/// The same step by the book, vertex by vertex. No vertex may have two open fans.
void subdivideSlowly(TopoMesh& mesh, TopoMesh& result)
{
    std::unordered_map<TopoMeshFace, TopoMeshVertex> ofFace;
    std::unordered_map<TopoMeshEdge, TopoMeshVertex> ofEdge;
    std::unordered_map<TopoMeshVertex, TopoMeshVertex> ofVertex;
    for (const auto f : facesOf(mesh)) ofFace[f] = result.allocVertex(f.centroid());
    for (const auto e : edgesOf(mesh)) {
        if (ofEdge.count(e)) continue;
        const Point a = e->origin->point, b = endOf(e)->point;
        const TopoMeshEdge t = e->twin;
        ofEdge[e] = result.allocVertex(t ? mean({a, b, ofFace[e->face]->point, ofFace[t->face]->point}) : mean({a, b}));
        if (t) ofEdge[t] = ofEdge[e];
    }
    for (const auto v : verticesOf(mesh)) {
        const double n = v.valence();
        const Vector old = v->point.asVector();
        Vector faces, middles, border;
        for (const auto e : outgoingOf(v)) {
            faces += ofFace[e->face]->point.asVector() / n;
            middles += mean({v->point, endOf(e)->point}).asVector() / n;
            if (!e->twin) border += endOf(e)->point.asVector() / 8;
            if (!e->prev->twin) border += e->prev->origin->point.asVector() / 8;
        }
        const bool stays = n == 0 || (v.onBoundary() && n == 1);
        const Vector inside = faces / n + 2 * middles / n + (n - 3) * old / n;
        const Vector moved = stays ? old : v.onBoundary() ? border + 3 * old / 4 : inside;
        ofVertex[v] = result.allocVertex(moved.asPoint());
    }
    for (const auto f : facesOf(mesh))
        for (const auto e : sidesOf(f)) result.allocQuad(ofFace[f], ofEdge[e], ofVertex[endOf(e)], ofEdge[e->next]);
    meshTwin(result);
}

void expectSame(const TopoMesh& mesh, const TopoMesh& expected)
{
    ASSERT_EQ(mesh.numVertices(), expected.numVertices());
    ASSERT_EQ(mesh.numEdges(), expected.numEdges());
    ASSERT_EQ(mesh.numFaces(), expected.numFaces());
    for (auto v = mesh.firstVertex(), w = expected.firstVertex(); v; v = v->next, w = w->next) {
        ASSERT_LT((v->point - w->point).length(), 1e-13 * (1 + w->point.asVector().length())) << v.number();
        ASSERT_EQ(v.valence(), w.valence());
    }
    for (auto e = mesh.firstEdge(), f = expected.firstEdge(); e; e = e->listNext, f = f->listNext) {
        ASSERT_EQ(e->origin.number(), f->origin.number()) << e.number();
        ASSERT_EQ(e->next.number(), f->next.number()) << e.number();
        ASSERT_EQ(e->face.number(), f->face.number()) << e.number();
        ASSERT_EQ(e->twin ? e->twin.number() : -1, f->twin ? f->twin.number() : -1) << e.number();
    }
}

/// What holds whatever the mesh.
void expectRefined(const TopoMesh& mesh, const TopoMesh& result)
{
    int numEdges = 0;
    for (const auto e : edgesOf(mesh)) numEdges += !e->twin || e < e->twin;
    EXPECT_EQ(result.numVertices(), mesh.numVertices() + numEdges + mesh.numFaces());
    EXPECT_EQ(result.numFaces(), mesh.numEdges());
    EXPECT_EQ(eulerNumber(result), eulerNumber(mesh));
    EXPECT_EQ(countBoundary(result), 2 * countBoundary(mesh));
    EXPECT_TRUE(checkTopology(result));
}

/// Whether two faces have no more in common than an edge.
bool meetInOneEdge(TopoMeshFace a, TopoMeshFace b)
{
    int numCommon = 0;
    for (const auto e : sidesOf(a)) numCommon += b.adjacent(e->origin) ? 1 : 0;
    return a != b && numCommon == 2;
}

/// A torus of triangles and larger faces in no particular order. No face meets itself.
void makeMixed(TopoMesh& mesh, Random& random)
{
    CompactMesh torus;
    makeTorus(torus, 7 + random.below(5), 5 + random.below(4));
    fill(mesh, torus);
    meshTwin(mesh);
    for (int i = 0; i < 40; ++i) {
        TopoMeshEdge e = mesh.firstEdge();
        for (int steps = random.below(mesh.numEdges()); steps > 0; --steps) e = e->listNext;
        if (random.oneIn(3))
            mesh.subdivideEdge(e, mean({e->origin->point, endOf(e)->point}));
        else if (meetInOneEdge(e->face, e->twin->face))
            mesh.deleteEdge(e);
    }
}

/// Where repeated steps take an interior vertex of a quad mesh.
Point limitOf(TopoMeshVertex v)
{
    const double n = v.valence();
    Vector sum = n * n * v->point.asVector();
    for (const auto e : outgoingOf(v)) sum += 4 * endOf(e)->point.asVector() + endOf(e->next)->point.asVector();
    return (sum / (n * (n + 5))).asPoint();
}

} // namespace

TEST(Subdivide, OfOneQuadAndOfACube)
{
    TopoMesh quad;
    addSquares(quad, 1, 1);
    const MeshPointer four = subdivided(quad);
    EXPECT_TRUE(checkTopology(*four));
    EXPECT_EQ(four->numVertices(), 9);
    EXPECT_EQ(four->numFaces(), 4);
    // The centre, the middles of the sides, the corners, which stay.
    const Point expected[] = {{0.5, 0.5, 0}, {0.5, 0, 0}, {1, 0.5, 0}, {0.5, 1, 0}, {0, 0.5, 0},
                              {0, 0, 0},     {1, 0, 0},   {1, 1, 0},   {0, 1, 0}};
    for (int i = 0; const auto v : verticesOf(*four)) EXPECT_EQ(v->point, expected[i++]);

    TopoMesh cube;
    addBox(cube, 1);
    LogRecorder log;
    const MeshPointer round = subdivided(cube);
    EXPECT_EQ(log.count("meshTwin: 26 vertices: "), 1);
    EXPECT_EQ(round->numFaces(), 24);
    expectRefined(cube, *round);
    EXPECT_EQ(countBoundary(*round), 0);
    TopoMeshVertex corner = round->firstVertex();
    for (int i = 0; i < 18; ++i) corner = corner->next;
    EXPECT_NEAR(std::abs(corner->point.x - 0.5), 0.5 * 5 / 9, 1e-15);

    TopoMesh empty;
    EXPECT_EQ(subdivided(empty)->numVertices(), 0);
}

TEST(Subdivide, IsTheStepByTheBook)
{
    Random random(21);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        TopoMesh mesh, expected;
        if (round == 0) {
            mesh.allocVertex({7, 8, 9}); // without a face
            addSquares(mesh, 3, 3);
            addBox(mesh, 2);
        } else {
            makeMixed(mesh, random);
        }
        if (round % 2 == 1) // faces that are far apart, so that at most one fan of a vertex is open
            for (int i = 0; i < 3; ++i) {
                TopoMeshFace face = mesh.firstFace();
                for (int steps = random.below(mesh.numFaces()); steps > 0; --steps) face = face->next;
                bool isInside = true;
                for (const auto e : sidesOf(face)) isInside = isInside && !e->origin.onBoundary();
                if (isInside) mesh.deleteFace(face);
            }
        ASSERT_TRUE(checkTopology(mesh));
        subdivideSlowly(mesh, expected);
        const MeshPointer result = subdivided(mesh);
        expectSame(*result, expected);
        expectRefined(mesh, *result);
    }
}

TEST(Subdivide, KeepsTheLimitOfQuads)
{
    for (const bool isOpen : {false, true}) {
        TopoMesh start;
        if (isOpen)
            addSquares(start, 4, 3);
        else
            addBox(start, 2);
        Random random(4);
        for (const auto v : verticesOf(start)) v->point += random.vector(0.3);
        TopoMemory memory;
        MeshPointer mesh = subdivided(start);
        for (int level = 0; level < 3; ++level) {
            MeshPointer finer = subdivided(*mesh, &memory);
            TopoMeshVertex after = finer->firstVertex();
            for (int i = finer->numVertices() - mesh->numVertices(); i > 0; --i) after = after->next;
            for (const auto v : verticesOf(*mesh)) {
                if (!v.onBoundary()) {
                    EXPECT_LT((limitOf(v) - limitOf(after)).length(), 1e-12);
                }
                after = after->next;
            }
            // What was made in lent memory must not outlive it.
            mesh = subdivided(*mesh);
        }
    }
}

TEST(Subdivide, CopesWithAnyPairing)
{
    // A Moebius band whose halves run the same way somewhere, edges of three faces, fans that only touch.
    CompactMesh band, scan;
    makeMobiusBand(band, 9);
    makeNoisyScan(scan, 12, 12);
    for (const CompactMesh* source : {&band, &scan}) {
        TopoMesh mesh;
        fill(mesh, *source);
        meshTwin(mesh);
        MeshPointer once = subdivided(mesh);
        EXPECT_TRUE(checkTopology(*once, false));
        EXPECT_EQ(countBoundary(*once), 2 * countBoundary(mesh));
        EXPECT_TRUE(checkTopology(*subdivided(*once), false));
    }
    // Two squares that touch at a corner: its four neighbours along the boundary count alike.
    TopoMesh touching;
    Lattice at(touching);
    touching.allocFace({at(0, 0, 0), at(1, 0, 0), at(1, 1, 0), at(0, 1, 0)});
    touching.allocFace({at(1, 1, 0), at(2, 1, 0), at(2, 3, 0), at(1, 3, 0)});
    const MeshPointer result = subdivided(touching);
    EXPECT_TRUE(checkTopology(*result));
    bool isThere = false;
    for (const auto v : verticesOf(*result)) isThere = isThere || v->point == Point(1, 1.0625, 0);
    EXPECT_TRUE(isThere);
}

TEST(Subdivide, CanBeEditedAfterwards)
{
    TopoMesh box;
    addBox(box, 1);
    const MeshPointer mesh = subdivided(box);
    const int before = mesh->numEdges();
    Random random(8);
    for (int i = 0; i < 30; ++i) {
        TopoMeshEdge e = mesh->firstEdge();
        for (int steps = random.below(mesh->numEdges()); steps > 0; --steps) e = e->listNext;
        if (i % 3 == 0) mesh->subdivideFace(e->face, e->face.centroid());
        if (i % 3 == 1) mesh->collapseEdge(e);
        if (i % 3 == 2) mesh->deleteFace(e->face);
        ASSERT_TRUE(checkTopology(*mesh)) << i;
    }
    EXPECT_NE(mesh->numEdges(), before);
}

TEST(Subdivide, OfRealMeshesKeepsWhatTheyAre)
{
    if (!forEachSharedMesh(12'000, [](const CompactMesh& source) {
            TopoMesh mesh;
            fill(mesh, source);
            meshTwin(mesh);
            const MeshPointer result = subdivided(mesh);
            int numEdges = 0;
            for (const auto e : edgesOf(mesh)) numEdges += !e->twin || e < e->twin;
            EXPECT_EQ(result->numVertices(), mesh.numVertices() + numEdges + mesh.numFaces());
            EXPECT_EQ(eulerNumber(*result), eulerNumber(mesh));
            EXPECT_TRUE(checkTopology(*result, false));
        }))
        GTEST_SKIP() << "no folder of meshes";
}

TEST(SubdividedOctahedron, IsASphereOfQuads)
{
    const ParamPlane plane({3, -2, 5}, {0, 2, 0}, {0, 0, 0.1});
    const int numVertices[] = {6, 26, 98, 386}, numFaces[] = {8, 24, 96, 384};
    for (int levels = -1; levels < 4; ++levels) {
        const double radius = 2.5;
        const MeshPointer mesh(constructSubdividedOctahedron(plane, levels, radius));
        EXPECT_TRUE(checkTopology(*mesh));
        EXPECT_EQ(mesh->numVertices(), numVertices[std::max(levels, 0)]);
        EXPECT_EQ(mesh->numFaces(), numFaces[std::max(levels, 0)]);
        EXPECT_EQ(countBoundary(*mesh), 0);
        EXPECT_EQ(eulerNumber(*mesh), 2);
        for (const auto v : verticesOf(*mesh)) EXPECT_NEAR((v->point - plane.origin).length(), radius, 1e-14);
        for (const auto f : facesOf(*mesh)) EXPECT_EQ(f.numVertices(), levels > 0 ? 4 : 3);
        EXPECT_GT(volumeOf(*mesh), 0) << "outward";
        const TopoMeshVertex a = mesh->firstVertex();
        EXPECT_EQ(a->point, Point(3, 0.5, 5));
        EXPECT_EQ(a->next->point, Point(3, -4.5, 5));
        EXPECT_EQ(a->next->next->point, Point(3, -2, 7.5));
    }
}
