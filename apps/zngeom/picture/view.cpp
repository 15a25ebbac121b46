#include "apps/zngeom/picture/view.h"

#include <limits>

namespace tool {

View::View(const znLinear::Vector& towards, const znLinear::Vector& up, const znLinear::Point& middle)
    : m_towards(towards), m_middle(middle)
{
    m_towards.normalize();
    m_right = cross(up, m_towards);
    m_right.normalize();
    m_down = cross(m_right, m_towards);
}

Spot View::at(const znLinear::Point& point) const
{
    const znLinear::Vector seen = turned(point - m_middle);
    return {m_x + m_scale * seen.dx, m_y + m_scale * seen.dy, -m_scale * seen.dz};
}

znLinear::Vector View::turned(const znLinear::Vector& direction) const
{
    return {dot(direction, m_right), dot(direction, m_down), dot(direction, m_towards)};
}

void View::zoom(const Spot& corner, const Spot& opposite, const Frame& frame)
{
    const double width = opposite.x - corner.x, height = opposite.y - corner.y;
    const double largest = std::max(width / frame.width(), height / frame.height());
    const double factor = largest > 0 ? 1 / largest : 1;
    m_scale *= factor;
    m_x = (frame.left + frame.right) / 2.0 + factor * (m_x - (corner.x + opposite.x) / 2);
    m_y = (frame.top + frame.bottom) / 2.0 + factor * (m_y - (corner.y + opposite.y) / 2);
}

void fitToFrame(View& view, const znGeom::CompactMesh& mesh, const Frame& frame)
{
    constexpr double far = std::numeric_limits<double>::max(), margin = 0.04;
    Spot least{far, far, 0}, most{-far, -far, 0};
    for (int corner = 0; corner < 3 * mesh.getNumTriangles(); ++corner) {
        const znGeom::MeshVertex& vertex = mesh.getVertices()[mesh.getTrianglesRaw()[corner]];
        if (!isFinite(vertex)) continue;
        const Spot spot = view.at(vertex);
        least = {std::min(least.x, spot.x), std::min(least.y, spot.y), 0};
        most = {std::max(most.x, spot.x), std::max(most.y, spot.y), 0};
    }
    if (least.x > most.x) least = most = {};
    const double edge = margin * std::max(most.x - least.x, most.y - least.y);
    view.zoom({least.x - edge, least.y - edge, 0}, {most.x + edge, most.y + edge, 0}, frame);
}

} // namespace tool
