#include "znGeom/planar/polylines/polyline_2d.h"

#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom {

using znLinear::Point2;
using znLinear::Range2d;

Polyline2d::Polyline2d(const zn::vector<Point2>& points, const zn::vector<double>& parameters)
{
    m_vertices.reserve(points.size());
    for (int i = 0; i < points.size(); ++i) {
        appendVertex(points[i]);
        if (i < parameters.size()) m_vertices.back().parameter = parameters[i];
    }
}

void Polyline2d::appendVertex(const Point2& point)
{
    m_vertices.append({point, m_vertices.empty() ? 0 : m_vertices.back().parameter + 1});
}

bool Polyline2d::getClosed() const { return internal::comesBack(m_vertices); }

Range2d Polyline2d::getBoundingBox() const { return internal::boundsOf<Range2d>(m_vertices); }

Point2 Polyline2d::eval(double parameter) const { return internal::pointAt(m_vertices, parameter); }

} // namespace znGeom
