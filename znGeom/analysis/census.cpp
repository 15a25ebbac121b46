#include "znGeom/analysis/census.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/internal/pieces.h"

namespace znGeom {

namespace {

/// Per vertex the number of its edges; -1 where no triangle uses it.
zn::vector<int> findValences(const CompactMesh& mesh, const MeshEdgeSides& sides)
{
    zn::vector<int> valences(mesh.getNumVertices(), -1);
    const int* corners = mesh.getTrianglesRaw();
    for (int i = 0; i < 3 * mesh.getNumTriangles(); ++i) valences[corners[i]] = 0;
    for (int edge = 0; edge < sides.getNumEdges(); ++edge) {
        const int side = sides.sides(edge).front();
        ++valences[corners[side]];
        ++valences[corners[cornerAtSideEnd(side)]];
    }
    return valences;
}

void countVertex(const MeshVertex& vertex, int valence, MeshVertexCensus& census)
{
    if (isFinite(vertex))
        census.bounds.extend(&vertex.x);
    else
        ++census.nonFinite;
    if (valence < 0) {
        ++census.unused;
        return;
    }
    census.minValence = census.minValence < 0 ? valence : std::min(census.minValence, valence);
    census.maxValence = std::max(census.maxValence, valence);
}

class EdgeCounter
{
public:
    explicit EdgeCounter(const CompactMesh& mesh)
        : m_corners(mesh.getTrianglesRaw()), m_vertices(mesh.getVertices()), m_onBoundary(mesh.getNumVertices())
    {}

    void count(std::span<const int> sides)
    {
        const int from = m_corners[sides.front()], to = m_corners[cornerAtSideEnd(sides.front())];
        int triangles = 0, previous = -1, balance = 0;
        for (const int side : sides) {
            triangles += side / 3 != previous;
            previous = side / 3;
            balance += m_corners[side] == from ? 1 : -1;
        }
        ++m_census.edges;
        m_census.nonManifold += triangles >= 3;
        m_census.unbalanced += triangles >= 2 && balance != 0;
        if (triangles == 1) {
            ++m_census.boundary;
            m_onBoundary.setBit(from);
            m_onBoundary.setBit(to);
        }
        const double length = (m_vertices[to].asPoint() - m_vertices[from].asPoint()).length();
        if (std::isfinite(length)) m_census.longest = std::max(m_census.longest, length);
    }

    MeshEdgeCensus census()
    {
        m_census.boundaryVertices = m_onBoundary.getNumSetBits();
        return m_census;
    }

private:
    const int* m_corners;
    const MeshVertex* m_vertices;
    BitVector m_onBoundary;
    MeshEdgeCensus m_census;
};

} // namespace

bool meshCountVertices(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                       MeshVertexCensus& result)
{
    if (progress.cancelled()) return false;
    const zn::vector<int> valences = findValences(mesh, sides);
    const MeshVertex* vertices = mesh.getVertices();
    MeshVertexCensus census;
    const auto count = [&](int begin, int end) {
        for (int v = begin; v < end; ++v) countVertex(vertices[v], valences[v], census);
    };
    if (!internal::forEachPiece(mesh.getNumVertices(), progress, count)) return false;
    result = census;
    return true;
}

bool meshCountEdges(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                    MeshEdgeCensus& result)
{
    EdgeCounter counter(mesh);
    const auto count = [&](int begin, int end) {
        for (int edge = begin; edge < end; ++edge) counter.count(sides.sides(edge));
    };
    if (!internal::forEachPiece(sides.getNumEdges(), progress, count)) return false;
    result = counter.census();
    return true;
}

int meshCountDegenerateTriangles(const CompactMesh& mesh)
{
    const MeshTriangle* triangles = mesh.getTriangles();
    return static_cast<int>(std::count_if(triangles, triangles + mesh.getNumTriangles(), repeatsVertex));
}

} // namespace znGeom
