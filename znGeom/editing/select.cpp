#include "znGeom/editing/select.h"

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/planar/shapes/polygon.h"

namespace znGeom {

using znLinear::Point;
using znLinear::ProjMatrix;
using znLinear::ProjMatrixFlt;

namespace {

/// The two lines that each selection function writes.
class SelectionLog
{
public:
    SelectionLog(const char* function, const CompactMesh& mesh)
    {
        debugChannel().print("MeshSelect::%s: vertices(%d) triangles(%d)\n", function, mesh.getNumVertices(),
                             mesh.getNumTriangles());
    }
    void vertices(const BitVector& selection)
    {
        debugChannel().print("  selected vertices(%d): %f s\n", selection.getNumSetBits(), m_watch.stop());
    }
    void triangles(const BitVector& selection)
    {
        debugChannel().print("  selected triangles(%d): %f s\n", selection.getNumSetBits(), m_watch.stop());
    }

private:
    znOS::StopWatch m_watch;
};

/// x and y of each point, the first one again at the end.
zn::vector<float> closePolygon(const zn::vector<Point>& polygon)
{
    zn::vector<float> closed;
    closed.reserve(2 * polygon.size() + 2);
    const auto append = [&closed](const Point& p) {
        closed.append(float(p.x));
        closed.append(float(p.y));
    };
    for (const Point& p : polygon) append(p);
    if (!polygon.empty()) append(polygon.front());
    return closed;
}

/// One coordinate of a projected position, before the division by w.
float projected(const MeshVertex& v, const ProjMatrixFlt& matrix, int column)
{
    return v.x * matrix[0][column] + v.y * matrix[1][column] + v.z * matrix[2][column] + matrix[3][column];
}

} // namespace

MeshSelect::MeshSelect(CompactMesh& mesh, const MeshAdjTris& adjTris)
    : MeshSelect(mesh, adjTris, mesh.getSelectedTriangles(), mesh.getSelectedVertices())
{}

MeshSelect::MeshSelect(const CompactMesh& mesh, const MeshAdjTris& adjTris, BitVector& triangles, BitVector& vertices)
    : m_mesh(&mesh), m_adjTris(&adjTris), m_selectedTriangles(&triangles), m_selectedVertices(&vertices),
      m_triangles(mesh.getTriangles()), m_vertices(mesh.getVertices())
{}

void MeshSelect::resizeSelections() const
{
    m_selectedTriangles->resize(m_mesh->getNumTriangles());
    m_selectedVertices->resize(m_mesh->getNumVertices());
}

BitVector& MeshSelect::getSelectedVertices() const
{
    resizeSelections();
    return *m_selectedVertices;
}

BitVector& MeshSelect::getSelectedTriangles() const
{
    resizeSelections();
    return *m_selectedTriangles;
}

void MeshSelect::selectVertices(const ProjMatrix& matrix, const zn::vector<Point>& polygon)
{
    SelectionLog log("selectVertices", *m_mesh);
    resizeSelections();
    const zn::vector<float> closed = closePolygon(polygon);
    const ProjMatrixFlt toScreen(matrix);
    for (int v = 0; v < m_mesh->getNumVertices(); ++v) {
        const float x = projected(m_vertices[v], toScreen, 0), y = projected(m_vertices[v], toScreen, 1);
        const float w = projected(m_vertices[v], toScreen, 3);
        if (pointPolygonIntersect2D(closed.data(), closed.size() / 2, x / w, y / w)) m_selectedVertices->setBit(v);
    }
    log.vertices(*m_selectedVertices);
}

void MeshSelect::selectTrianglesFromVertices(int minCorners)
{
    SelectionLog log("selectTrianglesFromVertices", *m_mesh);
    replaceTriangles(minCorners);
    log.triangles(*m_selectedTriangles);
}

void MeshSelect::selectAllTrianglesFromVertices()
{
    SelectionLog log("selectAllTrianglesFromVertices", *m_mesh);
    replaceTriangles(1);
    log.triangles(*m_selectedTriangles);
}

void MeshSelect::replaceTriangles(int minCorners)
{
    resizeSelections();
    const std::uint32_t* words = m_selectedVertices->getWords();
    const auto selected = [words](int vertex) { return static_cast<int>(words[vertex >> 5] >> (vertex & 31) & 1u); };
    m_selectedTriangles->setWhere([this, selected, minCorners](int t) {
        const auto [a, b, c] = m_triangles[t].corners;
        return selected(a) + selected(b) + selected(c) >= minCorners;
    });
}

void MeshSelect::selectVerticesFromTriangles()
{
    SelectionLog log("selectVerticesFromTriangles", *m_mesh);
    resizeSelections();
    zn::vector<bool> isCorner(m_mesh->getNumVertices(), false); // cheaper to write in any order than bits are
    bool* const isCornerAt = isCorner.data();
    forEachSetBit(*m_selectedTriangles, [this, isCornerAt](int t) {
        for (const int corner : m_triangles[t].corners) isCornerAt[corner] = true;
    });
    m_selectedVertices->setWhere([isCornerAt](int v) { return isCornerAt[v]; });
    log.vertices(*m_selectedVertices);
}

void MeshSelect::selectTrianglesRecursive(bool oneStep)
{
    SelectionLog log("selectTrianglesRecursive", *m_mesh);
    resizeSelections();
    zn::vector<int> stack;
    stack.reserve(m_mesh->getNumTriangles());
    forEachSetBit(*m_selectedTriangles, [&stack](int t) { stack.append(t); });

    BitVector passed(m_mesh->getNumVertices()); // a vertex has nothing to add when it is met again
    while (!stack.empty()) {
        const MeshTriangle& triangle = m_triangles[stack.back()];
        stack.eraseBack();
        for (const int vertex : triangle.corners) {
            if (passed.isSet(vertex)) continue;
            passed.setBit(vertex);
            for (const int neighbour : m_adjTris->around(vertex)) {
                if (m_selectedTriangles->isSet(neighbour)) continue;
                m_selectedTriangles->setBit(neighbour);
                if (!oneStep) stack.append(neighbour);
            }
        }
    }
    log.triangles(*m_selectedTriangles);
}

void MeshSelect::invertTriangleSelection()
{
    SelectionLog log("invertTriangleSelection", *m_mesh);
    resizeSelections();
    BitVector inverse(m_mesh->getNumTriangles());
    inverse.setAllBits();
    forEachSetBit(*m_selectedTriangles, [&inverse](int t) { inverse.clearBit(t); });
    m_selectedTriangles->swap(inverse);
    log.triangles(*m_selectedTriangles);
}

void MeshSelect::selectAffectedTriangles(const std::deque<MeshCoord>& coords)
{
    SelectionLog log("selectAffectedTriangles", *m_mesh);
    resizeSelections();
    for (const MeshCoord& coord : coords)
        if (coord.valid()) addTrianglesAt(coord);
    log.triangles(*m_selectedTriangles);
}

void MeshSelect::addTrianglesAt(const MeshCoord& coord)
{
    const float* vertices = &m_vertices->x;
    const int* triangles = m_triangles->corners;
    const int* corners = m_triangles[coord.triangle].corners;
    int which = 0;
    if (coord.onVertex(vertices, triangles, znLinear::epsilonTol, &which)) {
        addTrianglesAround(corners[which]);
        return;
    }
    // A weight of zero puts the place on a side at any distance from the origin; far out the computed distance is lost
    // to rounding.
    int side = -1;
    for (int corner = 0; corner < 3; ++corner)
        if (coord.weights[corner] == 0) side = cornerAfter(corner);
    if (side < 0 && coord.onEdge(vertices, triangles, znLinear::epsilonTol, &which)) side = which;
    for (int corner = 0; corner < 3; ++corner)
        if (side < 0 || corner == side || corner == cornerAfter(side)) addTrianglesAround(corners[corner]);
}

void MeshSelect::addTrianglesAround(int vertex)
{
    m_selectedTriangles->setBits(m_adjTris->numTris(vertex), m_adjTris->triIndices(vertex));
}

} // namespace znGeom
