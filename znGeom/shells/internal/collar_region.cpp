#include "znGeom/shells/internal/collar_region.h"

#include <algorithm>
#include <cmath>

#include "znGeom/analysis/boundaries.h"
#include "znGeom/editing/select.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

/// How near a place is to a vertex or an edge that it counts as lying on: as a distance, and as a part of its triangle,
/// without which small meshes would have nothing but vertices.
constexpr double nearDistance = 1e-6, nearPart = 1e-3;

double nearnessOn(TopoMeshFace face)
{
    double longest = 0;
    for (const TopoMeshEdge side : sidesOf(face))
        longest = std::max(longest, distance(side->origin->point, endOf(side)->point));
    return std::min(nearDistance, nearPart * longest);
}

} // namespace

CollarRegion::CollarRegion(const CompactMesh& mesh, const MeshAdjTris& adjTris, std::span<const int> seeds)
    : m_mesh(mesh), m_adjTris(adjTris), m_seeds(seeds), m_isSeed(mesh.getNumVertices())
{
    m_isSeed.setBits(static_cast<int>(seeds.size()), seeds.data());
    BitVector triangles, vertices(m_isSeed);
    MeshSelect select(mesh, adjTris, triangles, vertices);
    select.selectTrianglesFromVertices(2);
    select.selectTrianglesRecursive(true);
    select.selectTrianglesRecursive(true);
    select.selectVerticesFromTriangles();
    m_convert.emplace(mesh, triangles, vertices, adjTris);
    m_topoMesh = &m_convert->extract();
    m_indices = listMembers(vertices, mesh.getNumVertices());
}

std::optional<TopoMeshPoint> CollarRegion::find(const MeshCoord& place) const
{
    if (place.triangle < 0 || place.triangle >= m_mesh.getNumTriangles() || !place.valid()) return {};
    const TopoMeshCoord coord = m_convert->copy(place);
    if (!coord.face) return {};
    const Point position = coord.evaluate();
    if (!std::isfinite(position.x) || !std::isfinite(position.y) || !std::isfinite(position.z)) return {};
    return TopoMeshPoint(coord, nearnessOn(coord.face));
}

TopoMeshVertex CollarRegion::seedAfter(TopoMeshVertex vertex, bool forward) const
{
    const auto found = std::find(m_seeds.begin(), m_seeds.end(), indexOf(vertex));
    if (found == m_seeds.end()) return {};
    if (forward) return m_convert->getTopoMeshVertex(found + 1 == m_seeds.end() ? m_seeds.front() : found[1]);
    return m_convert->getTopoMeshVertex(found == m_seeds.begin() ? m_seeds.back() : found[-1]);
}

bool CollarRegion::isOnMeshBorder(TopoMeshEdge edge) const
{
    return !edge->twin && !Boundary::hasEdge(m_mesh, m_adjTris, indexOf(endOf(edge)), indexOf(edge->origin));
}

} // namespace znGeom::internal
