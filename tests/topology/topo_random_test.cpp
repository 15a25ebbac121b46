// Random sequences of every operation. Tame ones keep to what leaves a simple surface, judged here by brute force over
// faces; wild ones ask for anything, on meshes that are not surfaces. The mesh must be whole after every step.
#include <algorithm>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/check_topology.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/topology/twin.h"

using namespace znGeom;
using namespace znTest;
using znLinear::Point;

namespace {

using VertexSet = std::set<TopoMeshVertex>;

class Editor
{
public:
    TopoMesh mesh;
    Random random;
    int done = 0;
    const char* last = ""; ///< the last operation
    const bool wild;

    Editor(const CompactMesh& start, std::uint64_t seed, bool isWild) : random(seed), wild(isWild)
    {
        fill(mesh, start);
        meshTwin(mesh);
    }

    void step()
    {
        struct Operation
        {
            const char* name;
            bool (Editor::*run)();
        };
        static constexpr Operation growing[] = {{"allocate", &Editor::allocate},
                                                {"subdivideEdge", &Editor::subdivideEdge},
                                                {"subdivideFace", &Editor::subdivideFace},
                                                {"cutFace", &Editor::cutFace},
                                                {"cutFaceAlongPath", &Editor::cutFaceAlongPath}};
        static constexpr Operation shrinking[] = {{"collapse", &Editor::collapse},
                                                  {"contract", &Editor::contract},
                                                  {"deleteVertex", &Editor::deleteVertex},
                                                  {"deleteEdge", &Editor::deleteEdge},
                                                  {"deleteFace", &Editor::deleteFace}};
        static constexpr Operation neutral[] = {{"swap", &Editor::swap},         {"splitEdge", &Editor::splitEdge},
                                                {"splitFan", &Editor::splitFan}, {"openSlit", &Editor::openSlit},
                                                {"merge", &Editor::merge},       {"twin", &Editor::twin}};
        const int kind = random.below(3);
        const bool grow = mesh.numFaces() < 25 || (kind == 0 && mesh.numFaces() < 90);
        const Operation& operation = kind == 2 ? neutral[random.below(6)]
                                     : grow    ? growing[random.below(5)]
                                               : shrinking[random.below(5)];
        last = operation.name;
        done += (this->*operation.run)();
        if (random.oneIn(8) && mesh.numEdges() > 0) anyEdge().setMetadata(random.below(20), BlindData(random.real()));
    }

private:
    template <typename Handle>
    Handle any(const std::vector<Handle>& from)
    {
        return from[static_cast<size_t>(random.below(static_cast<int>(from.size())))];
    }
    TopoMeshEdge anyEdge() { return any(listed(edgesOf(mesh))); }
    TopoMeshFace anyFace() { return any(listed(facesOf(mesh))); }
    TopoMeshVertex anyVertex() { return any(listed(verticesOf(mesh))); }
    static bool holds(TopoMeshFace f, TopoMeshVertex v) { return static_cast<bool>(f.adjacent(v)); }
    /// A face, or a vertex ring, that meets itself is left alone by operations that want a simple one.
    bool distinct(const std::vector<TopoMeshVertex>& vertices) const
    {
        return wild || VertexSet(vertices.begin(), vertices.end()).size() == vertices.size();
    }
    VertexSet neighbours(TopoMeshVertex v) const
    {
        VertexSet found;
        for (const TopoMeshEdge e : edgesOf(mesh)) {
            if (e->origin == v) found.insert(endOf(e));
            if (endOf(e) == v) found.insert(e->origin);
        }
        return found;
    }
    /// Whether two vertices may become one: no face but the given ones has both.
    bool canMeet(TopoMeshVertex a, TopoMeshVertex b, std::initializer_list<TopoMeshFace> common) const
    {
        if (wild) return true;
        for (const TopoMeshFace f : facesOf(mesh))
            if (holds(f, a) && holds(f, b) && std::find(common.begin(), common.end(), f) == common.end()) return false;
        return true;
    }

    bool allocate()
    {
        std::vector<TopoMeshVertex> corners;
        for (int i = random.below(2) + 3; i > 0; --i)
            corners.push_back(random.oneIn(2) ? mesh.allocVertex(random.point()) : anyVertex());
        if (!distinct(corners)) return false;
        if (corners.size() == 3)
            mesh.allocTriangle(corners[0], corners[1], corners[2]);
        else
            mesh.allocQuad(corners[0], corners[1], corners[2], corners[3]);
        return true;
    }
    bool subdivideEdge()
    {
        const TopoMeshEdge e = anyEdge();
        mesh.subdivideEdge(e, random.point());
        return true;
    }
    bool subdivideFace()
    {
        const TopoMeshFace f = anyFace();
        if (!distinct(cornersOf(f))) return false;
        mesh.subdivideFace(f, random.point());
        return true;
    }
    bool cutFace()
    {
        const TopoMeshFace f = anyFace();
        const auto corners = cornersOf(f);
        const size_t a = static_cast<size_t>(random.below(static_cast<int>(corners.size())));
        if (wild) return static_cast<bool>(mesh.subdivideFace(f, corners[a], any(corners)));
        if (corners.size() < 4 || !distinct(corners)) return false;
        const size_t b =
            (a + 2 + static_cast<size_t>(random.below(static_cast<int>(corners.size()) - 3))) % corners.size();
        const TopoMeshEdge cut = mesh.subdivideFace(f, corners[a], corners[b]);
        EXPECT_TRUE(cut->face == f && cut->origin == corners[a] && endOf(cut) == corners[b]);
        return true;
    }
    bool cutFaceAlongPath()
    {
        const TopoMeshFace f = anyFace();
        const auto corners = cornersOf(f);
        const TopoMeshVertex a = any(corners), b = any(corners);
        if (a == b || !distinct(corners) || f.adjacent(a) == f.adjacent(b)) return false;
        zn::vector<Point> points;
        for (int i = random.below(3); i >= 0; --i) points.append(random.point());
        const TopoMeshFace created = mesh.subdivideFace(f, a, b, points);
        TopoMeshEdge path = f.adjacent(a);
        for (const Point& p : points) {
            path = path->next;
            EXPECT_TRUE(wild || path->origin->point == p);
        }
        EXPECT_TRUE(wild || (endOf(path) == b && path->twin->face == created));
        return true;
    }

    bool swap()
    {
        const TopoMeshEdge e = anyEdge();
        return mesh.swapEdge(e);
    }
    bool collapsible(TopoMeshEdge e) const
    {
        if (wild) return true;
        const TopoMeshFace f = e->face, g = e->twin ? e->twin->face : f;
        const TopoMeshVertex a = e->origin, b = endOf(e);
        if (e->twin && (f == g || (a.onBoundary() && b.onBoundary()))) return false;
        VertexSet apexes;
        size_t triangles = 0;
        for (const TopoMeshEdge side : {e, e->twin}) {
            if (!side || side->next->next->next != side) continue;
            apexes.insert(side->prev->origin);
            ++triangles;
        }
        VertexSet common, ofB = neighbours(b);
        for (const TopoMeshVertex v : neighbours(a))
            if (ofB.count(v)) common.insert(v);
        return apexes.size() == triangles && common == apexes && canMeet(a, b, {f, g}) && distinct(cornersOf(f)) &&
               distinct(cornersOf(g));
    }
    bool collapse()
    {
        const TopoMeshEdge e = anyEdge();
        if (!collapsible(e)) return false;
        mesh.collapseEdge(e);
        return true;
    }
    bool contract()
    {
        const TopoMeshEdge e = anyEdge();
        if (!collapsible(e)) return false;
        const TopoMeshVertex survivor = endOf(e);
        const Point place = survivor->point;
        EXPECT_TRUE(mesh.contractEdge(e) == survivor && survivor->point == place);
        return true;
    }
    bool deleteVertex()
    {
        const TopoMeshVertex v = anyVertex();
        std::vector<TopoMeshVertex> ring;
        if (v->edge) {
            for (TopoMeshEdgeVertexIterator it(v); it.valid(); it.next())
                for (TopoMeshEdge side = it.edge->next; endOf(side) != v; side = side->next)
                    ring.push_back(side->origin);
        }
        if (!distinct(ring)) return false;
        mesh.deleteVertex(v);
        return true;
    }
    bool deleteEdge()
    {
        const TopoMeshEdge e = anyEdge();
        const bool possible = e->twin && e->twin->face != e->face && e->twin->origin == endOf(e);
        EXPECT_EQ(mesh.deleteEdge(e), possible);
        return possible;
    }
    bool deleteFace()
    {
        const TopoMeshFace f = anyFace();
        mesh.deleteFace(f);
        return true;
    }
    bool splitEdge()
    {
        const TopoMeshEdge e = anyEdge();
        mesh.splitEdge(e);
        return true;
    }
    bool splitFan()
    {
        const TopoMeshEdge e = anyEdge();
        bool open = false;
        TopoMeshEdgeVertexIterator it(e->origin);
        for (it.edge = e; it.valid(); it.next()) open = open || !it.edge->twin;
        const bool divides = e->twin && open;
        const TopoMeshVertex copy = mesh.splitVertex(e->origin, e);
        EXPECT_TRUE(wild || static_cast<bool>(copy) == divides);
        return static_cast<bool>(copy);
    }
    bool openSlit()
    {
        const TopoMeshVertex v = anyVertex();
        if (!v->edge || v.onBoundary()) return false;
        std::vector<TopoMeshEdge> spokes;
        for (TopoMeshEdgeVertexIterator it(v); it.valid(); it.next()) spokes.push_back(it.edge);
        const TopoMeshEdge in = any(spokes)->twin, out = any(spokes);
        if (in->twin == out) return false;
        const int before = mesh.numVertices();
        mesh.splitVertex(in, out);
        EXPECT_TRUE(wild || (mesh.numVertices() == before + 1 && out->origin == v && endOf(in) == v));
        return true;
    }
    bool merge()
    {
        const TopoMeshEdge a = anyEdge(), b = anyEdge();
        if (a->twin || b->twin || a == b) return false;
        const TopoMeshVertex aEnd = endOf(a), bEnd = endOf(b);
        if (a->origin != bEnd && !canMeet(a->origin, bEnd, {})) return false;
        if (aEnd != b->origin && !canMeet(aEnd, b->origin, {})) return false;
        mesh.mergeVertices(a, b);
        return true;
    }
    bool twin()
    {
        if (wild) return meshTwin(mesh), true;
        // Opposite halves only: the other checks expect them that way.
        for (const TopoMeshEdge e : edgesOf(mesh)) {
            const TopoMeshEdge back = TopoMesh::findEdge(endOf(e), e->origin);
            if (!e->twin && back && !back->twin && back->face != e->face) return mesh.setTwins(e, back), true;
        }
        return false;
    }
};

void run(const CompactMesh& start, int seeds, int steps, bool wild = false)
{
    int done = 0;
    for (int seed = 1; seed <= seeds; ++seed) {
        Editor editor(start, static_cast<std::uint64_t>(seed), wild);
        for (int i = 0; i < steps; ++i) {
            editor.step();
            ASSERT_TRUE(checkTopology(editor.mesh, !wild)) << "seed " << seed << ", step " << i << ", " << editor.last;
        }
        done += editor.done;
    }
    EXPECT_GT(done, seeds * steps / 4); // most of what is drawn can be done
}

/// Meshes that are not surfaces, or only just, each with its own oddity.
std::vector<CompactMesh> makeOddities()
{
    const std::vector<std::vector<MeshTriangle>> oddities = {
        {{{0, 1, 2}}, {{1, 0, 3}}, {{0, 1, 4}}, {{1, 0, 5}}, {{0, 1, 6}}},              // a book
        {{{0, 1, 2}}, {{0, 1, 2}}, {{0, 2, 1}}, {{1, 3, 2}}, {{1, 3, 2}}},              // doubled faces
        {{{0, 1, 2}}, {{0, 2, 1}}},                                                     // all sides shared
        {{{0, 1, 2}}, {{0, 3, 4}}, {{0, 5, 6}}, {{6, 7, 8}}, {{8, 9, 2}}},              // fans that touch
        {{{0, 1, 2}}, {{1, 3, 2}}, {{2, 3, 4}}, {{3, 5, 4}}, {{4, 5, 1}}, {{5, 0, 1}}}, // a one-sided band
        {{{0, 1, 2}}, {{0, 1, 3}}, {{1, 2, 3}}, {{2, 0, 3}}, {{2, 0, 4}}},              // wound both ways
        {{{0, 0, 1}}, {{1, 0, 0}}, {{0, 1, 0}}, {{2, 2, 2}}, {{2, 0, 1}}, {{1, 1, 2}}}, // corners repeated
        {{{0, 1, 2}}, {{0, 2, 3}}, {{0, 3, 1}}, {{1, 3, 2}}, {{0, 4, 5}}, {{0, 5, 6}}, {{0, 6, 4}}, {{4, 6, 5}}}};
    std::vector<CompactMesh> meshes;
    for (const auto& triangles : oddities) {
        CompactMesh mesh;
        mesh.resizeVertexArray(10);
        for (int v = 0; v < 10; ++v) mesh.getVertices()[v].set(float(v % 3), float(v / 3), float(v % 2));
        mesh.resizeTriangleArray(static_cast<int>(triangles.size()));
        std::copy(triangles.begin(), triangles.end(), mesh.getTriangles());
        meshes.push_back(mesh);
    }
    return meshes;
}

/// Collapses any edge, again and again, until there is none.
void collapseToNothing(const CompactMesh& start, int seeds)
{
    for (int seed = 1; seed <= seeds; ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        TopoMesh mesh;
        fill(mesh, start);
        meshTwin(mesh);
        for (int step = 0; mesh.numEdges() > 0; ++step) {
            const auto edges = listed(edgesOf(mesh));
            const TopoMeshEdge e = edges[static_cast<size_t>(random.below(mesh.numEdges()))];
            const TopoMeshVertex origin = e->origin, end = endOf(e);
            const TopoMeshVertex left = origin.valence() > end.valence() ? origin : end,
                                 gone = left == end ? origin : end;
            const Point place = end->point;
            EXPECT_EQ(mesh.collapseEdge(e), left);
            EXPECT_TRUE(left.isAlive() && left->point == place && !e.isAlive() && (gone == left || !gone.isAlive()));
            ASSERT_TRUE(checkTopology(mesh, false)) << "seed " << seed << ", step " << step;
        }
        EXPECT_EQ(mesh.numFaces(), 0);
    }
}

} // namespace

TEST(TopoRandom, EditsOfClosedMeshesKeepThemWhole)
{
    CompactMesh sphere, torus;
    makeSphere(sphere, 1);
    makeTorus(torus, 6, 4);
    run(sphere, 4, 1000);
    run(torus, 4, 1000);
}

TEST(TopoRandom, EditsOfOpenMeshesKeepThemWhole)
{
    CompactMesh grid, annulus;
    makeGrid(grid, 5, 5);
    makeAnnulus(annulus, 8);
    run(grid, 4, 1000);
    run(annulus, 4, 1000);
}

TEST(TopoRandom, EditsOfAnyKindKeepAnyMeshWhole)
{
    CompactMesh sphere, grid;
    makeSphere(sphere, 1);
    makeGrid(grid, 4, 4);
    run(sphere, 3, 1000, true);
    run(grid, 3, 1000, true);
    for (const CompactMesh& oddity : makeOddities()) run(oddity, 3, 500, true);
}

TEST(TopoRandom, AnyMeshCollapsesToNothing)
{
    CompactMesh octahedron, sphere, torus, band;
    makeSphere(octahedron, 0);
    makeSphere(sphere, 1);
    makeTorus(torus, 5, 4);
    makeMobiusBand(band, 7);
    for (const CompactMesh* mesh : {&octahedron, &sphere, &torus, &band}) collapseToNothing(*mesh, 40);
    for (const CompactMesh& oddity : makeOddities()) collapseToNothing(oddity, 40);
}
