#include "znGeom/curves/internal/cut_opening.h"

#include <algorithm>

#include "znGeom/curves/internal/pace.h"
#include "znGeom/planar/shapes/internal/polygon_frame.h"
#include "znGeom/planar/shapes/triangulate_polygon.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

double lengthOf(TopoMeshEdge e) { return distance(e->origin->point, endOf(e)->point); }

template <typename T>
zn::vector<T> sortedOnce(zn::vector<T> all)
{
    std::sort(all.begin(), all.end());
    return {all.begin(), std::unique(all.begin(), all.end())};
}

zn::vector<TopoMeshVertex> cornersOf(TopoMeshFace face)
{
    zn::vector<TopoMeshVertex> corners;
    for (const TopoMeshEdge side : sidesOf(face)) corners.append(side->origin);
    return corners;
}

zn::vector<Point> placesOf(const zn::vector<TopoMeshVertex>& corners)
{
    zn::vector<Point> places;
    for (const TopoMeshVertex corner : corners) places.append(corner.point());
    return places;
}

/// Cuts one of some faces between two of its corners that are no neighbours in it; the new face joins them.
void cutBetween(TopoMesh& mesh, zn::vector<TopoMeshFace>& pieces, TopoMeshVertex a, TopoMeshVertex b)
{
    for (const TopoMeshFace piece : zn::vector<TopoMeshFace>(pieces))
        if (piece.adjacent(a) && piece.adjacent(b))
            if (const TopoMeshEdge made = mesh.subdivideFace(piece, a, b)) return pieces.append(made->twin->face);
}

/// Triangles from a face on which triangulating has failed, whatever they look like.
void cutEars(TopoMesh& mesh, TopoMeshFace face)
{
    while (face.numVertices() > 3) {
        TopoMeshEdge ear = face->edge;
        for (const TopoMeshEdge side : sidesOf(face))
            if (!areJoined(side->origin, endOf(side->next))) {
                ear = side;
                break;
            }
        const TopoMeshEdge made = mesh.subdivideFace(face, ear->origin, endOf(ear->next));
        if (!made) return;
        if (made->face.numVertices() == 3) face = made->twin->face;
    }
}

} // namespace

CutOpening::CutOpening(TopoMesh& mesh, TopoMeshCurves& curves, MeshCutAccount& account)
    : m_mesh(mesh), m_account(account), m_isCut(mesh.edgeNumbers())
{
    for (MeshCurveTopologyIterator at(curves); at.valid(); at.next()) {
        const auto next = at.getIterator().next();
        if (!next) continue;
        const TopoMeshVertex a = at.getIterator().value()->vertex, b = next.value()->vertex;
        if (!a || !b || a == b) continue;
        TopoMeshEdge edge = TopoMesh::findEdge(a, b);
        if (!edge) edge = TopoMesh::findEdge(b, a);
        if (!edge)
            ++m_account.numSkippedRuns;
        else if (edge->twin)
            m_edges.append(std::min(edge, edge->twin));
    }
    m_edges = sortedOnce(std::move(m_edges));
    for (const TopoMeshEdge e : m_edges)
        for (const TopoMeshEdge half : {e, e->twin}) m_isCut.setBit(half.number());
}

bool CutOpening::open(znUtil::Progress& progress)
{
    zn::vector<TopoMeshEdge> halves;
    for (const TopoMeshEdge e : m_edges) halves.append(e->twin);
    const bool isDone = openInPasses(progress);
    for (int i = 0; i < m_edges.size(); ++i) {
        const bool isOpen = !m_edges[i]->twin;
        ++(isOpen ? m_account.numOpenedEdges : m_account.numUnopenedEdges);
        (isOpen ? m_account.openedLength : m_account.unopenedLength) += lengthOf(m_edges[i]);
        if (!isOpen) continue;
        m_opened.append(m_edges[i]);
        m_opened.append(halves[i]);
    }
    return isDone;
}

/// An edge that does not open has neighbours in the cut with an end on the boundary, or none. The former open when they
/// are next met, and then it does: so there are four passes at most.
bool CutOpening::openInPasses(znUtil::Progress& progress)
{
    zn::vector<int> left;
    for (int i = 0; i < m_edges.size(); ++i) left.append(i);
    Pace pace(progress);
    std::int64_t numSeen = 0;
    for (bool isSmaller = true; isSmaller;) {
        zn::vector<int> still;
        for (const int i : left) {
            if (!pace.goesOn(++numSeen, 2 * std::int64_t{m_edges.size()})) return false;
            if (m_edges[i]->twin) openEdge(m_edges[i]);
            if (m_edges[i]->twin) still.append(i);
        }
        isSmaller = still.size() < left.size();
        left.swap(still);
    }
    return !progress.cancelled();
}

void CutOpening::openEdge(TopoMeshEdge e)
{
    const TopoMeshVertex a = e->origin, b = endOf(e);
    const bool isAOpen = a.onBoundary(), isBOpen = b.onBoundary();
    if (isAOpen && isBOpen) return m_mesh.splitEdge(e);
    if (isAOpen) return void(m_mesh.splitVertex(a, e));
    if (isBOpen) return void(m_mesh.splitVertex(b, e->twin));
    // A slit does not open at a single edge: two in a row.
    if (const TopoMeshEdge partner = partnerAt(a, e)) return m_mesh.splitVertex(partner->twin, e);
    if (const TopoMeshEdge partner = partnerAt(b, e->twin)) m_mesh.splitVertex(e, partner);
}

/// Another edge of the cut that leaves a vertex, and does not reach the boundary. \param e  leaves it as well
TopoMeshEdge CutOpening::partnerAt(TopoMeshVertex v, TopoMeshEdge e) const
{
    for (const TopoMeshEdge other : fanOf(v))
        if (other != e && other->twin && m_isCut[other.number()] && !endOf(other).onBoundary()) return other;
    return {};
}

zn::vector<TopoMeshVertex> CutOpening::rim() const
{
    zn::vector<TopoMeshVertex> vertices;
    for (const TopoMeshEdge half : m_opened) {
        vertices.append(half->origin);
        vertices.append(endOf(half));
    }
    return sortedOnce(std::move(vertices));
}

void triangulateFace(TopoMesh& mesh, TopoMeshFace face)
{
    const zn::vector<TopoMeshVertex> corners = cornersOf(face);
    const int count = corners.size();
    if (count <= 3) return;
    const auto areNeighbours = [count](int i, int j) { return (i + 1) % count == j || (j + 1) % count == i; };
    BitVector forbidden(count * count);
    for (int i = 0; i < count; ++i)
        for (int j = 0; j < count; ++j)
            if (i != j && !areNeighbours(i, j) && areJoined(corners[i], corners[j])) forbidden.setBit(i * count + j);
    zn::vector<int> triangles;
    triangulatePolygon(framed(placesOf(corners)), triangles, &forbidden, nullptr);
    zn::vector<TopoMeshFace> pieces{face};
    for (int t = 0; t < triangles.size(); t += 3)
        for (int side = 0; side < 3; ++side) {
            const int i = triangles[t + side], j = triangles[t + (side + 1) % 3];
            if (!areNeighbours(i, j) && !areJoined(corners[i], corners[j]))
                cutBetween(mesh, pieces, corners[i], corners[j]);
        }
    for (const TopoMeshFace piece : pieces) cutEars(mesh, piece);
}

} // namespace znGeom::internal
