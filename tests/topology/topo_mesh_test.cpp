#include "znGeom/topology/topo_mesh.h"

#include <algorithm>
#include <unordered_set>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/topology/twin.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

/// A closed or open fan of triangles about a centre; the rim vertices come after the centre.
std::vector<TopoMeshVertex> makeFan(TopoMesh& mesh, int rim, bool closed)
{
    std::vector<TopoMeshVertex> v{mesh.allocVertex(Point::origin)};
    for (int i = 0; i < rim; ++i) v.push_back(mesh.allocVertex({std::cos(0.5 * i), std::sin(0.5 * i), 0}));
    const auto n = static_cast<size_t>(rim);
    for (size_t i = 1; i < n; ++i) mesh.allocTriangle(v[0], v[i], v[i + 1]);
    if (closed) mesh.allocTriangle(v[0], v[n], v[1]);
    return v;
}

std::vector<TopoMeshEdge> walk(TopoMeshEdgeVertexIterator it)
{
    std::vector<TopoMeshEdge> met;
    for (; it.valid(); it.next()) met.push_back(it.edge);
    return met;
}

} // namespace

TEST(TopoMesh, AnEmptyMeshAndALoneTriangle)
{
    TopoMesh mesh;
    EXPECT_TRUE(!mesh.firstVertex() && !mesh.firstEdge() && !mesh.firstFace());
    EXPECT_TRUE(checkTopology(mesh));
    EXPECT_EQ(mesh.numVertices() + mesh.numEdges() + mesh.numFaces(), 0);

    const auto a = mesh.allocVertex({0, 0, 0}), b = mesh.allocVertex({3, 0, 0}), c = mesh.allocVertex({0, 3, 3});
    EXPECT_TRUE(!a->edge && a.valence() == 0 && !a.onBoundary() && !a.adjacent(b));
    const TopoMeshFace f = mesh.allocTriangle(a, b, c);
    EXPECT_EQ(f->edge->origin, a);
    EXPECT_EQ(f->edge->next->origin, b);
    EXPECT_EQ(f.numVertices(), 3);
    EXPECT_EQ(f.centroid(), Point(1, 1, 1));
    EXPECT_EQ(f.adjacent(c), f->edge->prev);
    EXPECT_EQ(a.adjacent(c), f);
    EXPECT_EQ(a.valence(), 1);
    TopoMeshEdge prev, next;
    TopoMeshBoundaryIterator::getPrevNextEdges(b, prev, next);
    EXPECT_EQ(prev, f->edge);
    EXPECT_EQ(next, f->edge->next);
    EXPECT_FALSE(mesh.swapEdge(f->edge));
    EXPECT_EQ(mesh.findEdge(a, b), f->edge);
    EXPECT_FALSE(mesh.findEdge(b, a));
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoMesh, FansThatAreBuiltInOrderComeOutTwinned)
{
    // An octahedron fan by fan, and a cube of quads.
    TopoMesh octahedron;
    const auto v = makeFan(octahedron, 4, true);
    const auto bottom = octahedron.allocVertex({0, 0, -1});
    for (size_t i = 0; i < 4; ++i) octahedron.allocTriangle(bottom, v[1 + (i + 1) % 4], v[1 + i]);
    EXPECT_EQ(countBoundary(octahedron), 0);
    EXPECT_EQ(octahedron.numEdges(), 24);
    for (const auto vertex : verticesOf(octahedron)) EXPECT_TRUE(vertex.valence() == 4 && !vertex.onBoundary());
    EXPECT_EQ(TopoMesh::findEdge(v[1], v[2])->twin, TopoMesh::findEdge(v[2], v[1]));

    TopoMesh cube;
    std::vector<TopoMeshVertex> corner;
    for (int i = 0; i < 8; ++i) corner.push_back(cube.allocVertex({double(i & 1), double(i >> 1 & 1), double(i >> 2)}));
    for (const auto& q : {std::array{0u, 2u, 3u, 1u},
                          {0u, 1u, 5u, 4u},
                          {1u, 3u, 7u, 5u},
                          {3u, 2u, 6u, 7u},
                          {2u, 0u, 4u, 6u},
                          {4u, 5u, 7u, 6u}})
        cube.allocQuad(corner[q[0]], corner[q[1]], corner[q[2]], corner[q[3]]);
    EXPECT_TRUE(countBoundary(cube) == 0);
    EXPECT_TRUE(checkTopology(cube));
    EXPECT_TRUE(checkTopology(octahedron));
    EXPECT_EQ(corner[0].adjacent(corner[3])->edge->origin, corner[0]);
}

TEST(TopoMesh, HandlesAreOrderedByCreationThroughAllBlocks)
{
    TopoMesh mesh;
    CompactMesh grid;
    makeGrid(grid, 90, 60);
    fill(mesh, grid);
    EXPECT_TRUE(checkTopology(mesh)); // the order of the lists among other things
    int number = 0;
    std::unordered_set<TopoMeshEdge> hashed;
    for (const auto e : edgesOf(mesh)) {
        EXPECT_EQ(e.number(), number++);
        hashed.insert(e);
    }
    EXPECT_EQ(number, mesh.edgeNumbers());
    EXPECT_EQ(static_cast<int>(hashed.size()), mesh.numEdges());
    EXPECT_TRUE(TopoMeshVertex() < mesh.firstVertex());

    // A record is not used again: what comes after a deletion has a new number.
    const TopoMeshFace dead = mesh.firstFace();
    mesh.deleteFace(dead);
    const auto vertices = listed(verticesOf(mesh));
    const TopoMeshFace fresh = mesh.allocTriangle(vertices[0], vertices[1], vertices[90]);
    EXPECT_TRUE(fresh != dead && fresh.number() == mesh.faceNumbers() - 1);
    EXPECT_TRUE(checkTopology(mesh));
}

TEST(TopoMesh, SlotsReadZeroUntilWrittenAndAgreeInAPair)
{
    TopoMesh mesh;
    const auto v = makeFan(mesh, 3, false);
    const TopoMeshEdge e = TopoMesh::findEdge(v[0], v[2]);
    EXPECT_TRUE(e->metadata[19].asDouble() == 0.0 && !e->metadata[3].asBool() && !e->metadata.isWritten());
    e.setMetadata(7, 2.5);
    e->twin.setMetadata(8, true);
    EXPECT_EQ(e->twin->metadata[7].asDouble(), 2.5);
    EXPECT_TRUE(e->metadata[8].asBool() && !e->metadata[6].asBool());
    v[0]->metadata[15] = BlindData(-1.0);
    EXPECT_EQ(v[0]->metadata[15].asDouble(), -1.0);
    v[1]->metadata[0] = 3;
    EXPECT_TRUE(BlindData(v[1]->metadata[0]) == BlindData(3.0) && v[0]->metadata[0].asDouble() == 0);
    EXPECT_TRUE(TopoMeshEntity(e).kind() == 1 && TopoMeshEntity(e).asEdge() == e);
}

TEST(TopoMesh, TheWalkRoundAVertexBeginsWhereItIsTold)
{
    for (const bool closed : {true, false}) {
        TopoMesh mesh;
        const auto v = makeFan(mesh, 6, closed);
        const auto all = walk(TopoMeshEdgeVertexIterator(v[0]));
        EXPECT_EQ(all.size(), closed ? 6u : 5u);
        EXPECT_EQ(all[0], v[0]->edge);
        for (const TopoMeshEdge begin : all) {
            TopoMeshEdgeVertexIterator it(v[0]);
            it.edge = begin;
            auto met = walk(it);
            EXPECT_EQ(met[0], begin);
            EXPECT_TRUE(std::is_permutation(met.begin(), met.end(), all.begin(), all.end()));
        }
    }
}

TEST(TopoMesh, TheWalkMeetsEverySpokeOnceWhileTheOnesLeftAreSwapped)
{
    for (const bool closed : {true, false})
        for (int veto = 2; veto < 5; ++veto) {
            TopoMesh mesh;
            const auto v = makeFan(mesh, 12, closed);
            const auto all = walk(TopoMeshEdgeVertexIterator(v[0]));
            std::vector<TopoMeshEdge> met;
            for (TopoMeshEdgeVertexIterator it(v[0]); it.valid();) {
                const TopoMeshEdge e = it.edge;
                met.push_back(e);
                it.next();
                if (met.size() % static_cast<size_t>(veto) != 0) mesh.swapEdge(e);
            }
            EXPECT_TRUE(met.size() == all.size() && std::is_permutation(met.begin(), met.end(), all.begin()));
            EXPECT_LT(v[0].valence(), static_cast<int>(all.size()));
            EXPECT_TRUE(checkTopology(mesh));
        }
}

TEST(TopoMesh, BoundaryWalksGoRoundOnceBothWays)
{
    TopoMesh mesh;
    CompactMesh annulus;
    makeAnnulus(annulus, 7);
    fill(mesh, annulus);
    meshTwin(mesh);
    for (const auto start : verticesOf(mesh)) {
        std::vector<TopoMeshVertex> loops[2];
        for (const bool forward : {true, false}) {
            TopoMeshBoundaryIterator it(start, forward);
            EXPECT_FALSE(it.prevEdge());
            while (it.valid()) {
                EXPECT_FALSE(it.edge->twin);
                loops[forward].push_back(it.edge->origin);
                const TopoMeshEdge along = it.nextEdge();
                it.next();
                EXPECT_EQ(it.prevEdge(), along);
                if (it.valid()) {
                    EXPECT_EQ(it.edge->origin, forward ? along->next->origin : along->origin);
                }
            }
        }
        EXPECT_EQ(loops[1].size(), 7u);
        std::reverse(loops[0].begin() + 1, loops[0].end());
        EXPECT_EQ(loops[0], loops[1]);
    }
    EXPECT_FALSE(TopoMeshBoundaryIterator(mesh.allocVertex(Point::origin), true).valid());
}

TEST(TopoMesh, FansThatTouchAreAllSeen)
{
    // Two closed fans and an open one at one vertex.
    TopoMesh mesh;
    const auto centre = mesh.allocVertex(Point::origin);
    std::vector<TopoMeshVertex> rim;
    for (int i = 0; i < 12; ++i) rim.push_back(mesh.allocVertex({double(i), 1, 0}));
    for (size_t fan = 0; fan < 3; ++fan)
        for (size_t i = 0; i < (fan < 2 ? 4u : 3u); ++i)
            mesh.allocTriangle(centre, rim[4 * fan + i], rim[4 * fan + (i + 1) % 4]);
    meshTwin(mesh);
    EXPECT_TRUE(checkTopology(mesh));
    EXPECT_EQ(centre.valence(), 11);
    for (const auto spoke : listed(outgoingOf(centre))) {
        centre->edge = spoke;
        TopoMeshEdge in, out;
        TopoMeshBoundaryIterator::getPrevNextEdges(centre, in, out);
        EXPECT_TRUE(centre.onBoundary() && in && out && endOf(out) == rim[8] && in->origin == rim[11]);
        for (const auto v : rim) EXPECT_TRUE(centre.adjacent(v) && areJoined(v, centre) && areJoined(centre, v));
        EXPECT_TRUE(TopoMesh::findEdge(centre, rim[1]) && TopoMesh::findEdge(centre, rim[5]));
    }
    // All go with the vertex, one ring is closed.
    const TopoMeshFace face = mesh.deleteVertex(centre);
    EXPECT_TRUE(face && mesh.numFaces() == 1);
    EXPECT_TRUE(checkTopology(mesh));
}
