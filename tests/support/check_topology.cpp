#include "tests/support/check_topology.h"

#include <algorithm>
#include <set>
#include <unordered_map>

using namespace znGeom;

namespace znTest {

std::vector<TopoMeshVertex> cornersOf(TopoMeshFace face)
{
    std::vector<TopoMeshVertex> corners;
    for (const TopoMeshEdge side : sidesOf(face)) corners.push_back(side->origin);
    return corners;
}

int countBoundary(const TopoMesh& mesh)
{
    int count = 0;
    for (const TopoMeshEdge e : edgesOf(mesh)) count += !e->twin;
    return count;
}

void fill(TopoMesh& mesh, const CompactMesh& source)
{
    std::vector<TopoMeshVertex> vertices;
    for (int i = 0; i < source.getNumVertices(); ++i)
        vertices.push_back(mesh.allocVertex(source.getVertices()[i].asPoint()));
    const auto vertex = [&](int i) { return vertices[static_cast<size_t>(i)]; };
    for (int i = 0; i < source.getNumTriangles(); ++i) {
        const MeshTriangle& t = source.getTriangles()[i];
        mesh.allocTriangle(vertex(t[0]), vertex(t[1]), vertex(t[2]));
    }
}

namespace {

using testing::AssertionFailure;
using testing::AssertionResult;
using testing::AssertionSuccess;

template <typename Handle>
Handle previous(Handle element)
{
    if constexpr (std::is_same_v<Handle, TopoMeshEdge>)
        return element->listPrev;
    else
        return element->prev;
}

template <typename Handle>
AssertionResult checkList(const std::vector<Handle>& all, int count, const char* kind)
{
    if (static_cast<int>(all.size()) != count)
        return AssertionFailure() << all.size() << ' ' << kind << " in the list, the count says " << count;
    Handle before;
    for (const Handle element : all) {
        if (previous(element) != before) return AssertionFailure() << kind << " list: a wrong link back";
        if (before && !(before < element)) return AssertionFailure() << kind << " list: out of order";
        before = element;
    }
    return AssertionSuccess();
}

AssertionResult checkFaces(const std::vector<TopoMeshFace>& faces, const std::vector<TopoMeshEdge>& edges)
{
    size_t inCycles = 0;
    for (const TopoMeshFace f : faces) {
        if (!f->edge) return AssertionFailure() << "a face without a half-edge";
        TopoMeshEdge e = f->edge;
        size_t sides = 0;
        do {
            if (e->face != f) return AssertionFailure() << "a cycle leaves its face";
            if (!e->next || e->next->prev != e) return AssertionFailure() << "next and prev disagree";
            if (++sides > edges.size()) return AssertionFailure() << "a cycle that does not close";
            e = e->next;
        } while (e != f->edge);
        if (sides < 3) return AssertionFailure() << "a face of " << sides << " sides";
        inCycles += sides;
    }
    if (inCycles != edges.size()) return AssertionFailure() << "half-edges outside faces";
    return AssertionSuccess();
}

AssertionResult checkTwins(const std::vector<TopoMeshEdge>& edges, bool opposite)
{
    for (const TopoMeshEdge e : edges) {
        if (!e->twin) continue;
        if (e->twin == e || e->twin->twin != e || !e->twin->face) return AssertionFailure() << "a broken pair";
        if (std::minmax(e->origin, endOf(e)) != std::minmax(e->twin->origin, endOf(e->twin)))
            return AssertionFailure() << "twins with other ends";
        if (opposite && e->origin != endOf(e->twin)) return AssertionFailure() << "twins that run the same way";
        for (int slot = 0; slot < 20; ++slot)
            if (!(std::as_const(e->metadata)[slot] == std::as_const(e->twin->metadata)[slot]))
                return AssertionFailure() << "twins with different slots";
    }
    return AssertionSuccess();
}

/// The half-edges that can be reached from `e` by steps across twins at its origin, without any order.
std::set<TopoMeshEdge> reachable(TopoMeshEdge e)
{
    std::set<TopoMeshEdge> reached{e};
    std::vector<TopoMeshEdge> open{e};
    while (!open.empty()) {
        const TopoMeshEdge at = open.back();
        open.pop_back();
        for (const TopoMeshEdge step : {at->twin ? at->twin->next : TopoMeshEdge(), at->prev->twin})
            if (step && step->origin == e->origin && reached.insert(step).second) open.push_back(step);
    }
    return reached;
}

AssertionResult checkWalk(TopoMeshVertex v)
{
    const std::set<TopoMeshEdge> expected = reachable(v->edge);
    std::set<TopoMeshEdge> walked, inFan;
    for (TopoMeshEdgeVertexIterator it(v); it.valid(); it.next())
        if (!walked.insert(it.edge).second) return AssertionFailure() << "the walk round a vertex repeats itself";
    if (walked != expected) return AssertionFailure() << "the walk round a vertex misses something";
    for (const TopoMeshEdge e : fanOf(v))
        if (!inFan.insert(e).second) return AssertionFailure() << "the fan of a vertex repeats itself";
    if (inFan != expected) return AssertionFailure() << "the fan of a vertex misses something";
    return AssertionSuccess();
}

AssertionResult checkVertex(TopoMeshVertex v, const std::set<TopoMeshEdge>& leaving)
{
    if (!v.isAlive() || v.valence() != static_cast<int>(leaving.size()))
        return AssertionFailure() << "a vertex counts " << v.valence() << " of " << leaving.size();
    const std::vector<TopoMeshEdge> listedOut = listed(outgoingOf(v));
    if (listedOut.size() != leaving.size() || std::set(listedOut.begin(), listedOut.end()) != leaving)
        return AssertionFailure() << "a vertex lists other half-edges than those that leave it";
    if (leaving.empty() != !v->edge) return AssertionFailure() << "`edge` null at a vertex in use, or set at another";
    const bool boundary =
        std::any_of(leaving.begin(), leaving.end(), [](TopoMeshEdge e) { return !e->twin || !e->prev->twin; });
    if (v.onBoundary() != boundary) return AssertionFailure() << "onBoundary is wrong";
    if (leaving.empty()) return AssertionSuccess();
    if (!leaving.count(v->edge)) return AssertionFailure() << "`edge` does not leave its vertex";
    return checkWalk(v);
}

} // namespace

AssertionResult checkTopology(const TopoMesh& mesh, bool oppositeTwins)
{
    const auto vertices = listed(verticesOf(mesh));
    const auto edges = listed(edgesOf(mesh));
    const auto faces = listed(facesOf(mesh));
    if (auto result = checkList(vertices, mesh.numVertices(), "vertices"); !result) return result;
    if (auto result = checkList(edges, mesh.numEdges(), "half-edges"); !result) return result;
    if (auto result = checkList(faces, mesh.numFaces(), "faces"); !result) return result;
    if (auto result = checkFaces(faces, edges); !result) return result;
    if (auto result = checkTwins(edges, oppositeTwins); !result) return result;

    std::unordered_map<TopoMeshVertex, std::set<TopoMeshEdge>> leaving;
    for (const TopoMeshVertex v : vertices) leaving[v];
    for (const TopoMeshEdge e : edges) {
        const auto found = leaving.find(e->origin);
        if (found == leaving.end()) return AssertionFailure() << "a half-edge starts at no vertex of the mesh";
        found->second.insert(e);
    }
    for (const TopoMeshVertex v : vertices)
        if (auto result = checkVertex(v, leaving[v]); !result) return result;
    return AssertionSuccess();
}

} // namespace znTest
