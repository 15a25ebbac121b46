#include "znGeom/curves/closest_on_line.h"

#include <cstdint>
#include <limits>
#include <utility>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/select.h"
#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree_partition.h"
#include "znGeom/spatial/trees/octree_traversal.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// Two corners of a triangle, by number, 0 to 2.
struct CornerPair
{
    int first, second;
};

/// The order in which the edges of a triangle are tried.
constexpr CornerPair triedEdges[3] = {{0, 1}, {0, 2}, {1, 2}};

/// The number of the edge between two vertices: 0 from corner 0 to 1, 1 from 1 to 2, 2 from 2 to 0, in either
/// direction; -1 when the triangle has no such edge.
int edgeSlot(const MeshTriangle& triangle, int u, int w)
{
    for (int slot = 0; slot < 3; ++slot) {
        const int a = triangle[slot], b = triangle[cornerAfter(slot)];
        if ((a == u && b == w) || (a == w && b == u)) return slot;
    }
    return -1;
}

/// The lines on their mesh, and a copy of the triangles along them. A triangle is along a line when two of its corners
/// are on it.
struct LocalFrame
{
    const CompactMesh& fullMesh;
    const MeshAdjTris& fullAdjTris;
    zn::Reference<CompactMesh> localMesh{new CompactMesh};
    MeshAdjTris localAdjTris;
    zn::vector<int> localToFullVertex; ///< -1 for a vertex that is not on the line
    BitVector lineEdgeBits;            ///< three per triangle of the full mesh, one for each edge slot
    BitVector lineVertexBits;

    LocalFrame(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshSequence& lines)
        : fullMesh(mesh), fullAdjTris(adjTris), lineEdgeBits(zn::checkedSize(std::int64_t{3} * mesh.getNumTriangles())),
          lineVertexBits(mesh.getNumVertices())
    {
        lineVertexBits.setBits(lines.values.size(), lines.values.read());
        extractAlongLines();
        markEdges(lines);
    }

    /// Whether two vertices of the full mesh are joined by an edge of a line.
    bool isLineEdge(int u, int w) const
    {
        const MeshTriangle* triangles = fullMesh.getTriangles();
        for (const int triangle : fullAdjTris.around(u)) {
            const int slot = edgeSlot(triangles[triangle], u, w);
            if (slot >= 0 && lineEdgeBits.isSet(3 * triangle + slot)) return true;
        }
        return false;
    }

private:
    void extractAlongLines()
    {
        BitVector triangles, vertices = lineVertexBits;
        MeshSelect select(fullMesh, fullAdjTris, triangles, vertices);
        select.selectTrianglesFromVertices(2);
        select.selectVerticesFromTriangles();
        const zn::vector<int> localVertices = listMembers(vertices, vertices.getSize());
        const zn::vector<int> localTriangles = listMembers(triangles, triangles.getSize());
        const MeshSubset subset(localVertices.size(), localVertices.data(), localTriangles.size(),
                                localTriangles.data());
        meshExtract(*localMesh, fullMesh, subset);
        meshAdjTris(*localMesh, localAdjTris);
        localToFullVertex.reserve(localVertices.size());
        for (const int vertex : localVertices) localToFullVertex.append(lineVertexBits.isSet(vertex) ? vertex : -1);
    }

    void markEdges(const MeshSequence& lines)
    {
        const int* vertex = lines.values.read();
        for (int line = 0; line < lines.size(); vertex += lines.getLength(line++))
            for (int i = 0; i + 1 < lines.getLength(line); ++i) markEdge(vertex[i], vertex[i + 1]);
    }

    void markEdge(int u, int w)
    {
        const MeshTriangle* triangles = fullMesh.getTriangles();
        for (const int triangle : fullAdjTris.around(u)) {
            const int slot = edgeSlot(triangles[triangle], u, w);
            if (slot >= 0) lineEdgeBits.setBit(3 * triangle + slot);
        }
    }
};

/// Stands for a place whose triangle cannot be found.
MeshCoord nowhere()
{
    MeshCoord coord;
    coord.triangle = 0;
    coord.weights[2] = 1.0;
    return coord;
}

} // namespace

class MeshClosestPtOnLineImpl final : public zn::ImplBase
{
public:
    MeshClosestPtOnLineImpl(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshSequence& lines)
        : m_frame(mesh, adjTris, lines), m_octreeTris(new OctreeTris)
    {
        const CompactMesh& local = *m_frame.localMesh;
        BoundingBox box;
        meshBoundingBox(local, box);
        m_octree = new Octree(local.getNumVertices(), local.getVerticesRaw(), box, true, 16);
        computeOctreeTris(local, *m_octree, *m_octreeTris);
        m_longestEdge = meshLongestEdge(local);
    }

    MeshCoord closest(const Point& point) const
    {
        const CompactMesh& local = *m_frame.localMesh;
        MeshCoord onSurface;
        meshClosestPoint(local, *m_octree, m_frame.localAdjTris, point, m_longestEdge,
                         std::numeric_limits<double>::max(), nullptr, &onSurface);
        if (!onSurface.valid()) return onSurface;

        const Point place = onSurface.evaluate(local.getVertices(), local.getTriangles());
        BoundingBox box(&point.x);
        box.extend(PointFlt(place));
        box.extend(box.diagonalLength() * 0.5f);
        if (epsilonTolFlt > box.diagonalLength()) return atVertex(lineVertexOf(onSurface));
        return closestInBox(point, box, onSurface);
    }

private:
    /// The corner of a local triangle on which the place lies, if that corner is on the line, otherwise the last corner
    /// that is; as a vertex of the full mesh.
    int lineVertexOf(const MeshCoord& place) const
    {
        const CompactMesh& local = *m_frame.localMesh;
        const MeshTriangle& corners = local.getTriangles()[place.triangle];
        int stoodOn, lineVertex = -1;
        if (place.onVertex(local.getVerticesRaw(), local.getTrianglesRaw(), double(epsilonTolFlt), &stoodOn))
            lineVertex = m_frame.localToFullVertex[corners[stoodOn]];
        if (lineVertex >= 0) return lineVertex;
        for (const int corner : corners.corners)
            if (m_frame.localToFullVertex[corner] >= 0) lineVertex = m_frame.localToFullVertex[corner];
        return lineVertex;
    }

    MeshCoord atVertex(int vertex) const
    {
        if (m_frame.fullAdjTris.numTris(vertex) == 0) return nowhere();
        MeshCoord coord;
        coord.triangle = m_frame.fullAdjTris.around(vertex).front();
        coord.weights[cornerOf(m_frame.fullMesh.getTriangles()[coord.triangle], vertex)] = 1.0;
        return coord;
    }

    /// The place at parameter t of the way from u to w, in the first triangle that has both.
    MeshCoord onEdge(int u, int w, double t) const
    {
        const MeshTriangle* triangles = m_frame.fullMesh.getTriangles();
        for (const int triangle : m_frame.fullAdjTris.around(u)) {
            const MeshTriangle& corners = triangles[triangle];
            if (!hasVertex(corners, w)) continue;
            MeshCoord coord;
            coord.triangle = triangle;
            for (int corner = 0; corner < 3; ++corner)
                coord.weights[corner] = corners[corner] == u ? 1.0 - t : corners[corner] == w ? t : 0.0;
            return coord;
        }
        return nowhere();
    }

    MeshCoord closestInBox(const Point& point, const BoundingBox& box, const MeshCoord& onSurface) const
    {
        const CompactMesh& local = *m_frame.localMesh;
        const MeshVertex* vertices = local.getVertices();
        double best2 = std::numeric_limits<double>::max(), bestParam = 0;
        int bestStart = -1, bestEnd = -1;
        const auto tryEdge = [&](int a, int b) {
            const int u = m_frame.localToFullVertex[a], w = m_frame.localToFullVertex[b];
            if (u < 0 || w < 0 || !m_frame.isLineEdge(u, w)) return;
            const ParamLine edge(vertices[a].asPoint(), vertices[b].asPoint());
            const double d2 = distance2(point, edge.projectBounded(point, 0.0, 1.0));
            if (!(best2 > d2)) return;
            best2 = d2;
            bestParam = std::clamp(projectParam(point, edge), 0.0, 1.0);
            bestStart = u, bestEnd = w;
        };
        for (OctreeBBoxIntersectIt leaves(*m_octree, box); leaves.valid(); leaves.next()) {
            const int leaf = leaves.get().node->leafIndex;
            for (int i = 0; i < m_octreeTris->numTris(leaf); ++i) {
                const MeshTriangle& corners = local.getTriangles()[m_octreeTris->firstTri(leaf)[i]];
                for (const CornerPair& pair : triedEdges) tryEdge(corners[pair.first], corners[pair.second]);
            }
        }
        return bestStart < 0 ? onSurface : onEdge(bestStart, bestEnd, bestParam);
    }

    LocalFrame m_frame;
    zn::Reference<Octree> m_octree;
    zn::Reference<OctreeTris> m_octreeTris;
    double m_longestEdge; ///< of the local mesh, which never changes
};

MeshClosestPtOnLine::MeshClosestPtOnLine(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshSequence& lines)
    : m_impl(new MeshClosestPtOnLineImpl(mesh, adjTris, lines))
{}

MeshCoord MeshClosestPtOnLine::operator()(const Point& point) const { return m_impl->closest(point); }

} // namespace znGeom
