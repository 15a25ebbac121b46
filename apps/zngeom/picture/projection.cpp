#include "apps/zngeom/picture/projection.h"

#include <cmath>

namespace tool {

namespace {

/// Right, up, and to the viewer.
znLinear::Vector between(const Spot& a, const Spot& b) { return {b.x - a.x, a.y - b.y, a.depth - b.depth}; }

} // namespace

Projection::Projection(const znGeom::CompactMesh& mesh, const View& view) : m_mesh(mesh)
{
    const std::size_t count = static_cast<std::size_t>(mesh.getNumVertices());
    m_spots.resize(count);
    m_isFinite.resize(count, true);
    for (std::size_t i = 0; i < count; ++i) {
        const znGeom::MeshVertex& vertex = mesh.getVertices()[i];
        if (isFinite(vertex))
            m_spots[i] = view.at(vertex);
        else
            m_isFinite[i] = m_allFinite = false;
    }
}

bool Projection::see(int triangle, SeenTriangle& seen) const
{
    const znLinear::Vector lamp(-0.41, 0.52, 0.75);
    const znGeom::MeshTriangle& corners = m_mesh.getTriangles()[triangle];
    for (int i = 0; i < 3; ++i) {
        const std::size_t vertex = static_cast<std::size_t>(corners[i]);
        if (!m_allFinite && !m_isFinite[vertex]) return false;
        seen.corners[i] = m_spots[vertex];
    }
    const znLinear::Vector normal =
        cross(between(seen.corners[0], seen.corners[1]), between(seen.corners[0], seen.corners[2]));
    const double length = normal.length();
    seen.isFront = normal.dz > 0;
    seen.light = length > 0 ? std::max(dot(normal, lamp) / (seen.isFront ? length : -length), 0.0) : 0;
    seen.area = std::fabs(normal.dz) / 2;
    return true;
}

} // namespace tool
