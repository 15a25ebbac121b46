// Random sequences of every operation. What an operation asks of its arguments is tested here by brute force over
// faces; whatever it is given, the mesh must be whole after every step.
#include <algorithm>
#include <set>

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

    Editor(const CompactMesh& start, std::uint64_t seed) : random(seed)
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
    TopoMeshEdge anyEdge() { return any(edgesOf(mesh)); }
    TopoMeshFace anyFace() { return any(facesOf(mesh)); }
    TopoMeshVertex anyVertex() { return any(verticesOf(mesh)); }
    static TopoMeshVertex end(TopoMeshEdge e) { return e->next->origin; }
    static bool holds(TopoMeshFace f, TopoMeshVertex v) { return static_cast<bool>(f.adjacent(v)); }
    /// A face, or a vertex ring, that meets itself is left alone by who asks for a simple one.
    static bool distinct(const std::vector<TopoMeshVertex>& vertices)
    {
        return VertexSet(vertices.begin(), vertices.end()).size() == vertices.size();
    }
    VertexSet neighbours(TopoMeshVertex v) const
    {
        VertexSet found;
        for (const TopoMeshEdge e : edgesOf(mesh)) {
            if (e->origin == v) found.insert(end(e));
            if (end(e) == v) found.insert(e->origin);
        }
        return found;
    }
    /// Whether two vertices may become one although only the given faces know both.
    bool canMeet(TopoMeshVertex a, TopoMeshVertex b, std::initializer_list<TopoMeshFace> common) const
    {
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
        if (corners.size() < 4 || !distinct(corners)) return false;
        const size_t b =
            (a + 2 + static_cast<size_t>(random.below(static_cast<int>(corners.size()) - 3))) % corners.size();
        const TopoMeshEdge cut = mesh.subdivideFace(f, corners[a], corners[b]);
        EXPECT_TRUE(cut->face == f && cut->origin == corners[a] && end(cut) == corners[b]);
        return true;
    }
    bool cutFaceAlongPath()
    {
        const TopoMeshFace f = anyFace();
        const auto corners = cornersOf(f);
        const TopoMeshVertex a = any(corners), b = any(corners);
        if (a == b || !distinct(corners)) return false;
        zn::vector<Point> points;
        for (int i = random.below(3); i >= 0; --i) points.append(random.point());
        const TopoMeshFace created = mesh.subdivideFace(f, a, b, points);
        TopoMeshEdge path = f.adjacent(a);
        for (const Point& p : points) {
            path = path->next;
            EXPECT_EQ(path->origin->point, p);
        }
        EXPECT_TRUE(end(path) == b && path->twin->face == created);
        return true;
    }

    bool swap()
    {
        const TopoMeshEdge e = anyEdge();
        return mesh.swapEdge(e);
    }
    bool collapsible(TopoMeshEdge e) const
    {
        const TopoMeshFace f = e->face, g = e->twin ? e->twin->face : f;
        const TopoMeshVertex a = e->origin, b = end(e);
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
        if (e->twin || !collapsible(e)) return false;
        const TopoMeshVertex survivor = end(e);
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
                for (TopoMeshEdge side = it.edge->next; end(side) != v; side = side->next) ring.push_back(side->origin);
        }
        if (!distinct(ring)) return false;
        mesh.deleteVertex(v);
        return true;
    }
    bool deleteEdge()
    {
        const TopoMeshEdge e = anyEdge();
        const bool possible = e->twin && e->twin->face != e->face;
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
        EXPECT_EQ(static_cast<bool>(copy), divides);
        return divides;
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
        EXPECT_TRUE(mesh.numVertices() == before + 1 && out->origin == v && end(in) == v);
        return true;
    }
    bool merge()
    {
        const TopoMeshEdge a = anyEdge(), b = anyEdge();
        if (a->twin || b->twin || a == b) return false;
        const TopoMeshVertex aEnd = end(a), bEnd = end(b);
        if (a->origin != bEnd && !canMeet(a->origin, bEnd, {})) return false;
        if (aEnd != b->origin && !canMeet(aEnd, b->origin, {})) return false;
        mesh.mergeVertices(a, b);
        return true;
    }
    bool twin()
    {
        // Opposite halves only: the rest of the checks wants them so.
        for (const TopoMeshEdge e : edgesOf(mesh)) {
            const TopoMeshEdge back = TopoMesh::findEdge(end(e), e->origin);
            if (!e->twin && back && !back->twin && back->face != e->face) return mesh.setTwins(e, back), true;
        }
        return false;
    }
};

void run(const CompactMesh& start, int seeds, int steps)
{
    int done = 0;
    for (int seed = 1; seed <= seeds; ++seed) {
        Editor editor(start, static_cast<std::uint64_t>(seed));
        for (int i = 0; i < steps; ++i) {
            editor.step();
            ASSERT_TRUE(checkTopology(editor.mesh)) << "seed " << seed << ", step " << i << ", " << editor.last;
        }
        done += editor.done;
    }
    EXPECT_GT(done, seeds * steps / 4); // most of what is drawn can be done
}

} // namespace

TEST(TopoRandom, EditsOfClosedMeshesKeepThemWhole)
{
    CompactMesh sphere, torus;
    makeSphere(sphere, 1);
    makeTorus(torus, 6, 4);
    run(sphere, 8, 1000);
    run(torus, 8, 1000);
}

TEST(TopoRandom, EditsOfOpenMeshesKeepThemWhole)
{
    CompactMesh grid, annulus;
    makeGrid(grid, 5, 5);
    makeAnnulus(annulus, 8);
    run(grid, 8, 1000);
    run(annulus, 8, 1000);
}
