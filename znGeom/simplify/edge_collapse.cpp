#include "znGeom/simplify/edge_collapse.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/simplify/internal/edge_queue.h"
#include "znGeom/simplify/internal/link_test.h"
#include "znGeom/simplify/internal/quadric.h"
#include "znGeom/topology/internal/links.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using internal::EdgeQueue;
using internal::LinkTest;
using internal::Quadric;
using internal::VertexFans;
using znLinear::Point;
using znLinear::Vector;

namespace {

constexpr double notAllowed = std::numeric_limits<double>::max();

/// The quadrics of all vertices, by their numbers.
class VertexQuadrics
{
public:
    explicit VertexQuadrics(const TopoMesh& mesh) : m_quadrics(static_cast<size_t>(mesh.vertexNumbers()))
    {
        for (const TopoMeshFace face : facesOf(mesh)) addFace(face);
    }

    Quadric& operator[](TopoMeshVertex v) { return m_quadrics[static_cast<size_t>(v.number())]; }
    const Quadric& operator[](TopoMeshVertex v) const { return m_quadrics[static_cast<size_t>(v.number())]; }

    void release() { m_quadrics = std::vector<Quadric>(); }

    Quadric sum(TopoMeshEdge e) const
    {
        Quadric result = (*this)[e->origin];
        result.add((*this)[endOf(e)]);
        return result;
    }

private:
    void addFace(TopoMeshFace face)
    {
        const TopoMeshEdge first = face->edge;
        const Point at[] = {first->origin.point(), endOf(first).point(), first->prev->origin.point()};
        Vector normal = cross(at[1] - at[0], at[2] - at[0]);
        if (!normal.normalize()) return;
        const double offset = dot(normal, at[0].asVector());
        for (const TopoMeshEdge side : sidesOf(face)) {
            (*this)[side->origin].addPlane(normal, offset);
            if (!side->twin) addBorder(side, normal);
        }
    }

    /// Planes upright on a boundary edge, one through each end.
    void addBorder(TopoMeshEdge side, const Vector& normal)
    {
        const Vector upright = cross(endOf(side).point() - side->origin.point(), normal);
        for (const TopoMeshVertex v : {side->origin, endOf(side)})
            (*this)[v].addPlane(upright, dot(upright, v.point().asVector()));
    }

    std::vector<Quadric> m_quadrics;
};

/// What it costs to collapse an edge at the centre of the link test.
double costOf(TopoMeshEdge e, const VertexQuadrics& quadrics, const LinkTest& linkTest)
{
    if (!linkTest.allows(e)) return notAllowed;
    const Quadric sum = quadrics.sum(e);
    const double cost = sum.at(placementOf(sum, e->origin.point(), endOf(e).point()));
    // Rounding may take it below nothing, which must not be cheaper than nothing.
    return std::isfinite(cost) ? std::max(cost, 0.0) : notAllowed;
}

/// The half by which a pair is first met in the list of half-edges.
TopoMeshEdge firstHalf(TopoMeshEdge e) { return e->twin && e->twin < e ? e->twin : e; }

/// Prices all edges. Each is priced at that end at which more triangles meet, so that one look around this end serves
/// all of its edges.
void priceAll(const TopoMesh& mesh, const VertexQuadrics& quadrics, const VertexFans& fans, EdgeQueue& queue)
{
    std::vector<TopoMeshVertex> vertices;
    vertices.reserve(static_cast<size_t>(mesh.numVertices()));
    for (const TopoMeshVertex v : verticesOf(mesh)) vertices.push_back(v);
    for (const TopoMeshEdge e : edgesOf(mesh))
        if (firstHalf(e) == e) queue.append(e.number());

    const auto isPricedAt = [](TopoMeshEdge e, TopoMeshVertex v) {
        const TopoMeshVertex origin = e->origin, end = endOf(e);
        return v == (end.valence() > origin.valence() ? end : origin);
    };
    const auto priceAround = [&](TopoMeshVertex v, LinkTest& linkTest) {
        linkTest.setCentre(v);
        for (const TopoMeshEdge spoke : outgoingOf(v))
            for (const TopoMeshEdge e : {firstHalf(spoke), firstHalf(spoke->prev)})
                if (isPricedAt(e, v)) queue.setCost(e.number(), costOf(e, quadrics, linkTest));
    };
    parallelFor(znUtil::ThreadPool::get(), mesh.numVertices(), [&](znUtil::Slice slice, int) {
        LinkTest linkTest(mesh, fans);
        for (int i = slice.begin; i < slice.end; ++i) priceAround(vertices[static_cast<size_t>(i)], linkTest);
    });
    queue.order();
}

/// One run. What it knows of vertices and edges lies beside the mesh until it ends.
class EdgeCollapse
{
public:
    explicit EdgeCollapse(TopoMesh& mesh)
        : m_mesh(mesh), m_quadrics(mesh), m_fans(mesh), m_queue(mesh.edgeNumbers()), m_linkTest(mesh, m_fans)
    {
        priceAll(mesh, m_quadrics, m_fans, m_queue);
    }

    void run(int targetFaces)
    {
        while (m_mesh.numFaces() > targetFaces && !m_queue.empty() && m_queue.top().cost < notAllowed) {
            const TopoMeshEdge e(TopoBlock::numbered(m_mesh.firstEdge().record(), m_queue.top().edge));
            m_linkTest.setCentre(e->origin);
            if (m_linkTest.allows(e))
                collapse(e);
            else
                m_queue.reprice(e.number(), notAllowed);
        }
    }

    /// Writes what it knows into the slots of what is left.
    void fillSlots() &&;

private:
    void collapse(TopoMeshEdge e);
    void takeAffected(TopoMeshEdge e);
    void takeFan(TopoMeshEdge e, TopoMeshEdge first);
    void takeSpoke(TopoMeshEdge e, TopoMeshEdge spoke);
    void takeArriving(TopoMeshEdge e, TopoMeshEdge spoke);

    TopoMesh& m_mesh;
    VertexQuadrics m_quadrics;
    VertexFans m_fans;
    EdgeQueue m_queue;
    LinkTest m_linkTest;
    std::vector<TopoMeshEdge> m_affected; ///< edges to price anew after a collapse
};

void EdgeCollapse::collapse(TopoMeshEdge e)
{
    const TopoMeshVertex origin = e->origin, end = endOf(e),
                         thirdCorners[] = {e->prev->origin, e->twin ? e->twin->prev->origin : TopoMeshVertex()};
    takeAffected(e);
    m_queue.erase(e.number());
    const Quadric sum = m_quadrics.sum(e);
    const Point place = placementOf(sum, origin.point(), end.point());
    const TopoMeshVertex survivor = m_mesh.collapseEdge(e);
    m_quadrics[survivor] = sum;
    m_mesh.setPoint(survivor, place);
    m_fans.merge(survivor, survivor == end ? origin : end);
    for (const TopoMeshVertex corner : thirdCorners)
        if (corner && !m_fans.isSingle(corner)) m_fans.update(corner);
    m_linkTest.setCentre(survivor);
    for (const TopoMeshEdge affected : m_affected)
        m_queue.reprice(affected.number(), costOf(affected, m_quadrics, m_linkTest));
}

/// Gathers the edges at both ends that will still be there when an edge has collapsed; of those that will not, the
/// entries leave the queue.
void EdgeCollapse::takeAffected(TopoMeshEdge e)
{
    m_affected.clear();
    takeFan(e, e);
    takeFan(e, e->next);
    takeArriving(e, e);
    if (e->twin) takeArriving(e, e->next);
}

/// The spokes of one end, from a first one on round to the end of the fan, then from the first one the other way.
void EdgeCollapse::takeFan(TopoMeshEdge e, TopoMeshEdge first)
{
    TopoMeshEdge spoke = first;
    do {
        takeSpoke(e, spoke);
        spoke = nextAround(spoke);
    } while (spoke && spoke != first);
    if (spoke) return;
    for (spoke = prevAround(first); spoke; spoke = prevAround(spoke)) takeSpoke(e, spoke);
}

void EdgeCollapse::takeSpoke(TopoMeshEdge e, TopoMeshEdge spoke)
{
    const TopoMeshEdge t = e->twin;
    if (spoke == e || spoke == t) return;
    const TopoMeshEdge held = m_queue.holds(spoke.number()) ? spoke : spoke->twin;
    if (!held || !m_queue.holds(held.number())) return;
    const bool faceGoes = held->face == e->face || (t && held->face == t->face);
    const TopoMeshEdge left = faceGoes ? held->twin : held;
    // Of two sides that become one, that before the edge stays.
    const bool isReplaced =
        left && ((left == e->next->twin && e->prev->twin) || (t && left == t->next->twin && t->prev->twin));
    if (!left || isReplaced) {
        m_queue.erase(held.number());
        return;
    }
    if (left != held) m_queue.rename(held.number(), left.number());
    m_affected.push_back(left);
}

/// The boundary half-edge that arrives where a spoke begins, which is no spoke itself.
void EdgeCollapse::takeArriving(TopoMeshEdge e, TopoMeshEdge spoke)
{
    const TopoMeshEdge arriving = boundaryIn(spoke);
    if (!arriving || !m_queue.holds(arriving.number())) return;
    if (arriving->face == e->face || (e->twin && arriving->face == e->twin->face))
        m_queue.erase(arriving.number());
    else
        m_affected.push_back(arriving);
}

/// One table after the other goes, so that they and the slots hardly ever need memory at the same time.
void EdgeCollapse::fillSlots() &&
{
    const std::vector<EdgeQueue::Entry> costs = m_queue.release();
    for (const TopoMeshVertex v : verticesOf(m_mesh)) {
        const znLinear::ProjMatrix matrix = m_quadrics[v].asMatrix();
        for (int i = 0; i < 16; ++i) v->metadata[i] = matrix[i / 4][i % 4];
    }
    m_quadrics.release();
    for (const EdgeQueue::Entry& entry : costs) {
        const TopoMeshEdge e(TopoBlock::numbered(m_mesh.firstEdge().record(), entry.edge));
        e.setMetadata(0, entry.cost);
        e.setMetadata(1, true);
    }
}

int targetOf(int numFaces, double fraction)
{
    if (fraction >= 1) return numFaces;
    return std::max(1, static_cast<int>(std::max(fraction, 0.0) * numFaces));
}

} // namespace

void meshReduceByEdgeCollapse(TopoMesh& mesh, double fraction, znUtil::Progress&)
{
    if (std::isnan(fraction)) return;
    for (const TopoMeshFace face : facesOf(mesh))
        if (!internal::isTriangle(face->edge)) return;
    EdgeCollapse run(mesh);
    run.run(targetOf(mesh.numFaces(), fraction));
    std::move(run).fillSlots();
}

} // namespace znGeom
