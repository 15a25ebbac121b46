#include "znGeom/shells/internal/collar_trim.h"

#include <algorithm>

#include "znGeom/foundation/linear/line.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

/// Where on a polyline a point is: on which segment, and how much of that is left to its end.
struct Location
{
    int segment = 0;
    double left = 1;

    bool isAfter(const Location& other) const
    {
        return segment != other.segment ? segment > other.segment : left < other.left;
    }
};

/// The nearest one, on the first of equally near segments. The polyline has one.
Location locate(const zn::vector<TopoMeshPoint>& places, const Point& point)
{
    Location nearest;
    double least = HUGE_VAL;
    for (int i = 0; i + 1 < places.size(); ++i) {
        const Point &begin = places[i].position, &end = places[i + 1].position;
        const Point foot = ParamLine(begin, end).projectBounded(point, 0, 1);
        const double away = distance2(foot, point);
        if (!(away < least)) continue;
        least = away;
        const double length2 = distance2(begin, end);
        nearest = {i, length2 > 0 ? std::sqrt(distance2(foot, end) / length2) : 1};
    }
    return nearest;
}

/// Begins the polyline at a place on it.
void cutBefore(zn::vector<TopoMeshPoint>& places, const TopoMeshPoint& start)
{
    if (places.size() < 2) return;
    const auto [segment, left] = locate(places, start.position);
    const bool isAtBegin = equivalent(left, 1.0, epsilonTol), isAtEnd = equivalent(left, 0.0, epsilonTol);
    zn::vector<TopoMeshPoint> kept;
    if (!isAtBegin && !isAtEnd) kept.append(start);
    kept.append({places.begin() + segment + (isAtBegin ? 0 : 1), places.end()});
    places.swap(kept);
}

} // namespace

zn::vector<TopoMeshPoint> trimCurve(zn::vector<TopoMeshPoint> places, const TopoMeshPoint& a, const TopoMeshPoint& b)
{
    if (places.size() < 2 || a.equivalent(b)) return {};
    const bool isReversed = locate(places, a.position).isAfter(locate(places, b.position));
    const TopoMeshPoint &first = isReversed ? b : a, &last = isReversed ? a : b;
    cutBefore(places, first);
    std::reverse(places.begin(), places.end());
    cutBefore(places, last);
    std::reverse(places.begin(), places.end());
    return places;
}

} // namespace znGeom::internal
