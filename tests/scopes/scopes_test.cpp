#include "znGeom/scopes.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <vector>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "tests/support/same_bits.h"
#include "tests/support/shapes.h"
#include "tests/support/tangles.h"
#include "tests/support/timed_lines.h"
#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

using namespace znGeom;
using znTest::adjTrisOf;
using znTest::checkTopology;
using znTest::Random;

namespace {

using Place = std::array<float, 3>;
using Corners = std::array<Place, 3>;
using Surface = std::vector<Corners>;

Place placeOf(const MeshVertex& v) { return {v.x, v.y, v.z}; }
Place placeOf(TopoMeshVertex v) { return {float(v->point.x), float(v->point.y), float(v->point.z)}; }

void add(Surface& surface, Corners corners)
{
    std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
    surface.push_back(corners);
}

/// The triangles as places, each from its lowest corner on; in order.
Surface surfaceOf(const CompactMesh& mesh)
{
    Surface surface;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        add(surface, {placeOf(mesh.getVertices()[a]), placeOf(mesh.getVertices()[b]), placeOf(mesh.getVertices()[c])});
    }
    std::sort(surface.begin(), surface.end());
    return surface;
}

/// The triangles outside a region, and those of the half-edge mesh.
Surface expectedAfter(const CompactMesh& mesh, const BitVector& region, const TopoMesh& edited)
{
    CompactMesh outside(mesh);
    int kept = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        if (!region[t]) outside.getTriangles()[kept++] = mesh.getTriangles()[t];
    outside.resizeTriangleArray(kept);
    Surface surface = surfaceOf(outside);
    for (const TopoMeshFace face : facesOf(edited)) {
        const TopoMeshEdge e = face->edge;
        add(surface, {placeOf(e->origin), placeOf(e->next->origin), placeOf(endOf(e->next))});
    }
    std::sort(surface.begin(), surface.end());
    return surface;
}

/// Triangles, and all their corners.
struct Region
{
    BitVector triangles, vertices;

    Region(const CompactMesh& mesh, const std::vector<int>& members)
        : triangles(mesh.getNumTriangles()), vertices(mesh.getNumVertices())
    {
        for (const int t : members) {
            triangles.setBit(t);
            for (const int corner : mesh.getTriangles()[t].corners) vertices.setBit(corner);
        }
    }
};

/// The triangles around a vertex, and around these.
Region twoRings(const CompactMesh& mesh, const MeshAdjTris& adjTris, int vertex)
{
    std::vector<int> members;
    for (const int t : adjTris.around(vertex))
        for (const int corner : mesh.getTriangles()[t].corners)
            for (const int u : adjTris.around(corner)) members.push_back(u);
    return Region(mesh, members);
}

TEST(ArrayMap, SortsWhenAskedAndTakesNullValuesForAbsent)
{
    ArrayMap<int, int> map;
    for (const int key : {7, 3, 9, 1}) map.append(key, 10 * key);
    EXPECT_FALSE(map.isSorted());
    EXPECT_EQ(map.find(3)->second, 30);
    EXPECT_TRUE(map.isSorted());
    EXPECT_EQ(map.find(4), map.end());
    map.find(7)->second = -1;
    EXPECT_EQ(map.find(7), map.end());
    EXPECT_EQ(map[7], -1);
    EXPECT_EQ(map.size(), 4);
    map.compact();
    EXPECT_EQ(map.size(), 3);
    EXPECT_EQ(map[9], 90);
    EXPECT_FALSE((ArrayMap<int, TopoMeshVertex>::nullValue()));
}

TEST(MeshConvertRep, EdgesOfTheRegionAreBoundary)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 2, 2);
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    for (const std::vector<int>& members : {std::vector<int>{0, 1}, std::vector<int>{1}, std::vector<int>{}}) {
        const Region region(mesh, members);
        MeshConvertRep scope(mesh, region.triangles, region.vertices, adjTris);
        TopoMesh& extracted = scope.extract();
        EXPECT_TRUE(checkTopology(extracted));
        EXPECT_EQ(extracted.numFaces(), int(members.size()));
        EXPECT_EQ(extracted.numVertices(), region.vertices.getNumSetBits());
        int numTwins = 0;
        for (const TopoMeshEdge e : edgesOf(extracted)) numTwins += bool(e->twin);
        EXPECT_EQ(numTwins, members.size() == 2 ? 2 : 0);
        for (int v = -1; v <= mesh.getNumVertices(); ++v) {
            const TopoMeshVertex handle = scope.getTopoMeshVertex(v);
            const bool isThere = v >= 0 && v < mesh.getNumVertices() && region.vertices[v];
            ASSERT_EQ(bool(handle), isThere);
            EXPECT_TRUE(!isThere || placeOf(handle) == placeOf(mesh.getVertices()[v]));
        }
    }
}

/// How the elements of a half-edge mesh are linked, by their numbers.
std::vector<std::array<int, 5>> linksOf(const TopoMesh& mesh)
{
    const auto numberOf = [](auto handle) { return handle ? handle.number() : -1; };
    std::vector<std::array<int, 5>> links;
    for (const TopoMeshEdge e : edgesOf(mesh))
        links.push_back(
            {numberOf(e->origin), numberOf(e->next), numberOf(e->prev), numberOf(e->twin), e->face.number()});
    for (const TopoMeshFace f : facesOf(mesh)) links.push_back({f.number(), f->edge.number()});
    for (const TopoMeshVertex v : verticesOf(mesh)) {
        links.push_back({v.number(), numberOf(v->edge), v.valence()});
        for (const TopoMeshEdge e : outgoingOf(v)) links.push_back({e.number()});
    }
    return links;
}

TEST(MeshConvertRep, LinksAsIfTrianglesCameOneByOne)
{
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        Random random(seed);
        const CompactMesh mesh = znTest::makeAnyMesh(random, int(seed));
        const MeshAdjTris adjTris = adjTrisOf(mesh);
        BitVector triangles(mesh.getNumTriangles()), vertices(mesh.getNumVertices());
        triangles.setAllBits();
        vertices.setAllBits();
        MeshConvertRep scope(mesh, triangles, vertices, adjTris);
        TopoMesh& extracted = scope.extract();
        TopoMesh expected;
        znTest::fill(expected, mesh);
        meshTwin(expected);
        ASSERT_EQ(linksOf(extracted), linksOf(expected)) << seed;
        // What is made next follows on.
        const TopoMeshVertex added = extracted.allocVertex({1, 2, 3});
        EXPECT_EQ(added.number(), mesh.getNumVertices());
        if (mesh.getNumTriangles() > 0) extracted.subdivideFace(extracted.firstFace(), znLinear::Point(0, 0, 0));
        EXPECT_TRUE(checkTopology(extracted, false));
    }
}

TEST(MeshConvertRep, CopiesCoordinatesOfItsTriangles)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 1);
    const Region region(mesh, {3, 4, 20});
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    MeshConvertRep scope(mesh, region.triangles, region.vertices, adjTris);
    scope.extract();
    MeshCoord coord;
    coord.weights[0] = 0.5, coord.weights[1] = 0.3, coord.weights[2] = 0.2;
    for (const int t : {3, 4, 20}) {
        coord.triangle = t;
        const TopoMeshCoord there = scope.copy(coord);
        EXPECT_EQ(there.evaluate(), coord.evaluate(mesh.getVertices(), mesh.getTriangles()));
    }
    for (const int t : {-1, 5, 1000}) {
        coord.triangle = t;
        const TopoMeshCoord there = scope.copy(coord);
        EXPECT_FALSE(there.face);
        EXPECT_EQ(there.w0 + there.w1 + there.w2, 0);
    }
}

TEST(MeshConvertRep, WritesAWholeHalfEdgeMeshInOrder)
{
    CompactMesh mesh;
    znTest::makeSphere(mesh, 2);
    BitVector all(mesh.getNumTriangles()), vertices(mesh.getNumVertices());
    all.setAllBits();
    vertices.setAllBits();
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    znTest::LogRecorder log;
    MeshConvertRep scope(mesh, all, vertices, adjTris);
    TopoMesh& extracted = scope.extract();
    EXPECT_EQ(znTest::withoutTimes(log).back(), "MeshConvertRep::extract: # s\n");
    for (const TopoMeshEdge e : edgesOf(extracted)) EXPECT_TRUE(e->twin);
    log.clear();
    const std::unique_ptr<CompactMesh> back(meshConvertRep(extracted));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(znTest::sameBits(*back, mesh));

    TopoMesh polygons;
    zn::vector<TopoMeshVertex> corners;
    for (int i = 0; i < 5; ++i) corners.append(polygons.allocVertex(znLinear::Point(i, i * i, 0.1)));
    polygons.allocQuad(corners[3], corners[0], corners[1], corners[2]);
    polygons.allocFace(corners);
    const std::unique_ptr<CompactMesh> fans(meshConvertRep(polygons));
    const std::vector<int> expected = {3, 0, 1, 3, 1, 2, 0, 1, 2, 0, 2, 3, 0, 3, 4};
    EXPECT_EQ(znTest::toVector(fans->getTrianglesRaw(), 3 * fans->getNumTriangles()), expected);
    EXPECT_EQ(fans->getVertices()[0].z, 0.1f);
}

TEST(MeshModifyRep, LeavesEveryBitWithoutAMerge)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, 9, 7);
    mesh.getSelectedTriangles().resize(mesh.getNumTriangles());
    mesh.getSelectedTriangles().setBit(5);
    const CompactMesh before(mesh);
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    const Region region = twoRings(mesh, adjTris, 10);
    znTest::ChangeRecorder changes(mesh);
    {
        MeshModifyRep scope(mesh, region.triangles, region.vertices, adjTris);
        TopoMesh& extracted = scope.extract();
        const TopoMeshVertex v = scope.getTopoMeshVertex(10);
        scope.removeVertex(v);
        extracted.deleteVertex(v);
    }
    EXPECT_TRUE(znTest::sameBits(mesh, before));
    EXPECT_TRUE(changes.changes().empty());
}

TEST(MeshModifyRep, MergesAnUntouchedRegionBack)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, 12, 9);
    const CompactMesh before(mesh);
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    const Region region = twoRings(mesh, adjTris, 40);
    const int outside = region.triangles[0] ? -1 : 0;
    ASSERT_GE(outside, 0);
    mesh.getSelectedTriangles().resize(mesh.getNumTriangles());
    mesh.getSelectedTriangles().setBit(outside);
    mesh.getSelectedVertices().resize(mesh.getNumVertices());
    const int selectedVertex = mesh.getNumVertices() - 1;
    mesh.getSelectedVertices().setBit(selectedVertex);
    znTest::ChangeRecorder changes(mesh);
    znTest::LogRecorder log;
    MeshModifyRep scope(mesh, region.triangles, region.vertices, adjTris);
    TopoMesh& extracted = scope.extract();
    Array<int> remap;
    ArrayMap<TopoMeshVertex, int> newIndices;
    scope.merge(remap, &newIndices);

    EXPECT_EQ(surfaceOf(mesh), surfaceOf(before));
    EXPECT_EQ(changes.changes().size(), 1u);
    EXPECT_EQ(log.count("MeshModifyRep::extract: "), 1);
    EXPECT_EQ(log.count("MeshModifyRep::merge(): "), 1);
    int last = -1;
    for (int v = 0; v < before.getNumVertices(); ++v) {
        ASSERT_EQ(placeOf(mesh.getVertices()[remap[v]]), placeOf(before.getVertices()[v]));
        const TopoMeshVertex handle = scope.getTopoMeshVertex(v);
        EXPECT_TRUE(!handle || newIndices[handle] == remap[v]);
        if (region.vertices[v]) continue;
        EXPECT_GT(remap[v], last) << "old ones keep their order";
        last = remap[v];
    }
    EXPECT_EQ(newIndices.size(), extracted.numVertices());
    EXPECT_EQ(mesh.getSelectedTriangles().getNumSetBits(), 1);
    const int* corners = before.getTriangles()[outside].corners;
    for (int t = 0; t < mesh.getNumTriangles(); ++t)
        EXPECT_TRUE(!mesh.getSelectedTriangles()[t] || mesh.getTriangles()[t][0] == remap[corners[0]]);
    EXPECT_TRUE(mesh.getSelectedVertices()[remap[selectedVertex]]);
}

TEST(MeshModifyRep, MovesTheFrontierAndForgetsWhatIsRemoved)
{
    CompactMesh mesh;
    znTest::makeGrid(mesh, 7, 7);
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    const int middle = 24, frontier = 26, untouched = 25;
    const Region region = twoRings(mesh, adjTris, middle);
    MeshModifyRep scope(mesh, region.triangles, region.vertices, adjTris);
    TopoMesh& extracted = scope.extract();
    const TopoMeshVertex v = scope.getTopoMeshVertex(middle);
    scope.removeVertex(v);
    scope.removeVertex(v);
    scope.removeVertex({});
    EXPECT_FALSE(scope.getTopoMeshVertex(middle));
    const TopoMeshFace ring = extracted.deleteVertex(v);
    const TopoMeshVertex added = extracted.subdivideFace(ring, znLinear::Point(3.25, 3.25, 1));
    extracted.setPoint(scope.getTopoMeshVertex(frontier), znLinear::Point(5.5, 3, 0));
    const Surface expected = expectedAfter(mesh, region.triangles, extracted);
    Array<int> remap;
    ArrayMap<TopoMeshVertex, int> newIndices;
    scope.merge(remap, &newIndices);
    // The moved vertex also moves where the mesh outside the region uses it.
    EXPECT_EQ(remap[middle], -1);
    EXPECT_EQ(placeOf(mesh.getVertices()[remap[frontier]]), (Place{5.5f, 3, 0}));
    EXPECT_EQ(placeOf(mesh.getVertices()[newIndices[added]]), (Place{3.25f, 3.25f, 1}));
    EXPECT_GE(remap[untouched], 0);
    EXPECT_EQ(mesh.getNumTriangles(), int(expected.size()));
    EXPECT_EQ(mesh.getNumVertices(), 49);
}

/// Whatever edits leave triangles.
void edit(MeshModifyRep& scope, TopoMesh& mesh, Random& random, int numEdits)
{
    for (int i = 0; i < numEdits && mesh.numFaces() > 0; ++i) {
        TopoMeshEdge e = mesh.firstEdge();
        for (int skip = random.below(mesh.numEdges()); skip > 0; --skip) e = e->listNext;
        const int what = random.below(4);
        if (what == 0) mesh.swapEdge(e);
        if (what == 1) mesh.subdivideFace(e->face, e->face.centroid());
        if (what == 2) mesh.deleteFace(e->face);
        if (what == 3 && TopoMesh::canCollapse(e)) {
            scope.removeVertex(e->origin);
            mesh.collapseEdge(e);
        }
    }
}

TEST(MeshModifyRep, MergesWhateverTheEditLeft)
{
    TopoMemory memory; // what one mesh leaves in it must not matter to the next
    for (std::uint64_t seed = 0; seed < 150; ++seed) {
        Random random(seed);
        CompactMesh mesh = znTest::makeAnyMesh(random, int(seed));
        if (mesh.getNumTriangles() == 0) continue;
        mesh.allocNormalArray();
        std::vector<int> members;
        for (int t = 0; t < mesh.getNumTriangles(); ++t)
            if (random.below(100) < int(seed % 5) * 25 || members.empty()) members.push_back(t);
        const Region region(mesh, members);
        const MeshAdjTris adjTris = adjTrisOf(mesh);
        const CompactMesh before(mesh);
        MeshModifyRep scope(mesh, region.triangles, region.vertices, adjTris, &memory);
        TopoMesh& extracted = scope.extract();
        EXPECT_TRUE(checkTopology(extracted, false));
        edit(scope, extracted, random, random.below(30));
        EXPECT_TRUE(checkTopology(extracted, false));
        const Surface expected = expectedAfter(before, region.triangles, extracted);
        const bool allGone = expected.empty();
        Array<int> remap;
        ArrayMap<TopoMeshVertex, int> newIndices;
        scope.merge(remap, &newIndices);
        ASSERT_EQ(surfaceOf(mesh), expected) << seed;
        ASSERT_GE(remap.size(), before.getNumVertices());
        for (int v = 0; v < before.getNumVertices(); ++v)
            ASSERT_TRUE(remap[v] < 0 || placeOf(mesh.getVertices()[remap[v]]) == placeOf(before.getVertices()[v]));
        for (const TopoMeshVertex vertex : verticesOf(extracted)) {
            const int now = newIndices[vertex];
            ASSERT_EQ(now < 0, allGone);
            ASSERT_TRUE(now < 0 || placeOf(mesh.getVertices()[now]) == placeOf(vertex));
        }
    }
}

TEST(MeshModifyRep, TakesInWhatAnEmptyRegionWasGiven)
{
    CompactMesh mesh;
    znTest::makeCube(mesh);
    const Surface before = surfaceOf(mesh);
    const MeshAdjTris adjTris = adjTrisOf(mesh);
    znTest::ChangeRecorder changes(mesh);
    MeshModifyRep scope(mesh, BitVector(), BitVector(), adjTris);
    TopoMesh& extracted = scope.extract();
    const TopoMeshVertex a = extracted.allocVertex({5, 0, 0}), b = extracted.allocVertex({6, 0, 0});
    extracted.allocTriangle(a, b, extracted.allocVertex({5, 1, 0}));
    Array<int> remap;
    scope.merge(remap, nullptr);
    EXPECT_EQ(mesh.getNumTriangles(), 13);
    EXPECT_EQ(mesh.getNumVertices(), 11);
    EXPECT_EQ(remap[7], 7);
    EXPECT_EQ(changes.changes().size(), 1u);
}

} // namespace
