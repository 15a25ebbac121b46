#include "znGeom/planar/polylines/polyline_intersect.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom {

using znLinear::Line;
using znLinear::ParamLine;
using znLinear::Plane;
using znLinear::Point;

namespace {

int numSegments(const Polyline* line) { return line ? line->getNumVertices() - 1 : 0; }

/// The parameter on an infinite line through a segment where it is nearest to another line: beside that line's own
/// point when they are parallel.
double nearestParam(const ParamLine& segment, const ParamLine& line)
{
    bool isCrossing;
    const Point place = intersect(Line(segment), Line(line), isCrossing, znLinear::perpendicular2Tol);
    return projectParam(isCrossing ? place : line.point, segment);
}

} // namespace

bool PolylineIntersectPt::intersect(const ParamLine& line, double& s, double& t)
{
    return nearest(line, nullptr, s, t);
}

bool PolylineIntersectPt::intersect(const ParamLine& line, bool inFront, double& s, double& t)
{
    return nearest(line, inFront ? &PolylineIntersectPt::inFrontTest : nullptr, s, t);
}

bool PolylineIntersectPt::intersect(const ParamLine& line, const znLinear::ProjMatrix& view, double& s, double& t)
{
    m_view = view;
    return nearest(line, &PolylineIntersectPt::inViewTest, s, t);
}

bool PolylineIntersectPt::nearest(const ParamLine& line, Test test, double& s, double& t) const
{
    double best = 1e300;
    bool isFound = false;
    for (int i = 0; i < numSegments(m_line); ++i) {
        const Polyline::vertex &from = m_line->getVertex(i), &to = m_line->getVertex(i + 1);
        const ParamLine segment(from.point, to.point);
        const double u = nearestParam(segment, line);
        const Point candidate = u < 0 ? from.point : u > 1 ? to.point : segment.eval(u);
        double beside;
        const Point place = project(candidate, line, beside);
        if (test && !(this->*test)(beside, place)) continue;
        const double distance2 = znLinear::distance2(place, candidate);
        const bool isTie = isFound && znLinear::equivalent(best, distance2, znLinear::epsilonTol);
        if (!(best > distance2 || (isTie && std::fabs(s) > std::fabs(beside)))) continue;
        best = distance2;
        s = beside;
        t = u < 0 ? from.parameter : u > 1 ? to.parameter : internal::parameterAt(from, to, u);
        isFound = true;
    }
    return isFound;
}

bool PolylineIntersectPt::inFrontTest(double s, const Point&) const { return s > 0; }

bool PolylineIntersectPt::inViewTest(double, const Point& place) const
{
    return (znLinear::HPoint(place) * m_view).insideView(true);
}

bool PolylineIntersectPt::intersect(const Plane& plane, double& t, Point& point, const Line* reference)
{
    double best = 1e300;
    bool isFound = false;
    for (int i = 0; i < numSegments(m_line); ++i) {
        const Polyline::vertex &from = m_line->getVertex(i), &to = m_line->getVertex(i + 1);
        const ParamLine segment(from.point, to.point);
        bool isHit;
        const Point hit = znLinear::intersect(Line(segment), plane, isHit, znLinear::perpendicular2Tol);
        if (!isHit) continue;
        // Where ends lie on either side, or on the plane, rounding must not let the plane slip through between two
        // segments.
        const double u = projectParam(hit, segment), before = plane.eval(from.point), after = plane.eval(to.point);
        const bool isBetween = (before <= 0 && after >= 0) || (before >= 0 && after <= 0);
        if (!isBetween && !(u >= 0 && u <= 1)) continue;
        const double away = reference ? distance(hit, *reference) : distance(hit, plane.point);
        if (!(best > away)) continue;
        best = away;
        point = hit;
        t = internal::parameterAt(from, to, std::clamp(u, 0.0, 1.0));
        isFound = true;
    }
    return isFound;
}

} // namespace znGeom
