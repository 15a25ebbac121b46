#include "znGeom/planar/polylines/polyline_project.h"

#include <cmath>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom {

using znLinear::ParamLine;
using znLinear::Point;

double PolylineProjectPt::project(const Point& p, Point& closest, double& distance) const
{
    double best = 1e300, result = -1;
    const int count = m_line ? m_line->getNumVertices() : 0;
    for (int i = 0; i + 1 < count; ++i) {
        const Polyline::vertex &from = m_line->getVertex(i), &to = m_line->getVertex(i + 1);
        const ParamLine segment(from.point, to.point);
        const double u = projectParam(p, segment);
        const Point candidate = u < 0 ? from.point : u > 1 ? to.point : segment.eval(u);
        const double distance2 = znLinear::distance2(p, candidate);
        if (!(best > distance2)) continue;
        best = distance2;
        closest = candidate;
        result = u < 0 ? from.parameter : u > 1 ? to.parameter : internal::parameterAt(from, to, u);
    }
    distance = std::sqrt(best);
    return result;
}

double PolylineProjectPt::project(const Point& p, Point& closest) const
{
    double distance;
    return project(p, closest, distance);
}

double PolylineProjectPt::project(const Point& p) const
{
    Point closest;
    return project(p, closest);
}

bool PolylineProjectPt::adjust(double& t1, double& t2) const
{
    if (!m_line || !m_line->getClosed()) return false;
    const double first = m_line->getVertex(0).parameter;
    const double last = m_line->getVertex(m_line->getNumVertices() - 1).parameter;
    const auto isEnd = [&](double t) { return t == first || t == last; };
    if (isEnd(t1) == isEnd(t2)) return false;
    double& end = isEnd(t1) ? t1 : t2;
    const double other = isEnd(t1) ? t2 : t1;
    end = std::fabs(other - last) > std::fabs(other - first) ? first : last;
    return true;
}

} // namespace znGeom
