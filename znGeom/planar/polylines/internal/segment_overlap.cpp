#include "znGeom/planar/polylines/internal/segment_overlap.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom::internal {

using znLinear::Line;
using znLinear::ParamLine;
using znLinear::Vector;

namespace {

/// Bounds `u` to where a value that changes evenly from `v0` to `v1`, over u from 0 to 1, lies between 0 and 1.
/// \return false if nothing is left
bool clip(double v0, double v1, double& first, double& last)
{
    const double slope = v1 - v0;
    if (slope == 0) return v0 >= 0 && v0 <= 1;
    const double at0 = -v0 / slope, at1 = (1 - v0) / slope;
    first = std::max(first, std::min(at0, at1));
    last = std::min(last, std::max(at0, at1));
    return first <= last;
}

/// Where a segment is within a cylinder of infinite length; the whole or nothing of it when it runs along the axis.
bool within(const ParamLine& segment, const Line& axis, double tolerance, double& first, double& last)
{
    const Vector across = segment.direction - axis.direction * dot(segment.direction, axis.direction);
    first = 0, last = 1;
    if (!(across.length2() > znLinear::perpendicular2Tol * segment.direction.length2()))
        return distance(segment.point, axis) < tolerance;
    double hits[2];
    const int numHits = intersectCylinder(segment, axis, tolerance, hits);
    if (numHits == 0) return false;
    first = std::max(0.0, hits[0]);
    last = std::min(1.0, hits[numHits - 1]);
    return first <= last;
}

} // namespace

std::optional<SegmentOverlap> SegmentPair::overlap(double tolerance) const
{
    const ParamLine segment(m_from, m_to), other(m_otherFrom.point, m_otherTo.point);
    double first, last;
    if (!within(segment, Line(other), tolerance, first, last)) return std::nullopt;
    const double v0 = projectParam(m_from, other), v1 = projectParam(m_to, other);
    if (!clip(v0, v1, first, last)) return std::nullopt;
    const auto placeAt = [&](double u) {
        const double v = std::clamp(v0 + (v1 - v0) * u, 0.0, 1.0);
        return PlaceBeside{u, parameterAt(m_otherFrom, m_otherTo, v), other.eval(v)};
    };
    const SegmentOverlap part{placeAt(first), placeAt(last)};
    // The cylinder bounds the distance but for rounding, and what it makes of huge numbers.
    const double bound = 1.1 * tolerance;
    if (!(distance(segment.eval(first), part.begin.beside) < bound)) return std::nullopt;
    if (!(distance(segment.eval(last), part.end.beside) < bound)) return std::nullopt;
    return part;
}

void SegmentOverlap::unite(const SegmentOverlap& other)
{
    const auto goesFarther = [](const PlaceBeside& place, const PlaceBeside& than, double from) {
        return std::fabs(place.parameter - from) > std::fabs(than.parameter - from);
    };
    const SegmentOverlap old = *this;
    const auto isBefore = [&](const PlaceBeside& a, const PlaceBeside& b) {
        return a.u < b.u || (a.u == b.u && goesFarther(a, b, old.end.parameter));
    };
    const auto isAfter = [&](const PlaceBeside& a, const PlaceBeside& b) {
        return a.u > b.u || (a.u == b.u && goesFarther(a, b, old.begin.parameter));
    };
    if (isBefore(other.begin, begin)) begin = other.begin;
    if (isAfter(other.end, end)) end = other.end;
}

} // namespace znGeom::internal
