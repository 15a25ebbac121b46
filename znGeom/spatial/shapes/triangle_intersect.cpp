#include "znGeom/spatial/shapes/triangle_intersect.h"

#include <algorithm>
#include <cmath>

#include "znGeom/analysis/normals.h"
#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/foundation/mesh/mesh_records.h"
#include "znGeom/spatial/shapes/internal/placed_triangle.h"

namespace znGeom {

using znLinear::Line;
using znLinear::Plane;
using znLinear::Point;
using znLinear::Range1d;
using znLinear::Vector;

namespace internal {

namespace {

/// The rounding of a distance from the plane of three points: with u = 2^-53, E and F the lengths of two sides and X
/// that of their cross product, the unit normal is off by at most 6 u E F / X + 3 u. The distance is its product with a
/// vector v, which adds 4 u |v|; E F / X is at least 1. Rounded up to 16 u E F / X |v|.
constexpr double rounding = 0x1p-49;

/// The sum of magnitudes: no less than the length, and cheaper.
double size(const Vector& v) { return std::fabs(v.dx) + std::fabs(v.dy) + std::fabs(v.dz); }

bool straddles(double x, double y)
{
    const double low = std::min(x, y), high = std::max(x, y);
    return (low < 0 && high >= 0) || (low <= 0 && high > 0);
}

/// Where a triangle meets the line common to both planes.
/// \param s  where its corners are along the line
/// \param d  their distances from the other plane
Range1d intervalOf(const double (&s)[3], const double (&d)[3])
{
    const auto cross = [&](int i, int j) { return d[i] == d[j] ? s[i] : s[i] + (s[j] - s[i]) * d[i] / (d[i] - d[j]); };
    const bool first = straddles(d[0], d[1]), third = straddles(d[0], d[2]);
    if (first == third) return {cross(0, 1), cross(0, 2)};
    return first ? Range1d(cross(1, 2), cross(1, 0)) : Range1d(cross(0, 2), cross(1, 2));
}

void distances(const PlacedTriangle& triangle, const PlacedTriangle& from, double (&d)[3])
{
    for (int i = 0; i < 3; ++i) d[i] = from.signedDistance(triangle.corners[i]);
}

bool onOneSide(const double (&d)[3])
{
    return (d[0] > 0 && d[1] > 0 && d[2] > 0) || (d[0] < 0 && d[1] < 0 && d[2] < 0);
}

Range1d intervalOf(const PlacedTriangle& triangle, const double (&d)[3], const Line& line)
{
    double s[3];
    for (int i = 0; i < 3; ++i) s[i] = dot(triangle.corners[i] - line.point, line.direction);
    return intervalOf(s, d);
}

} // namespace

PlacedTriangle::PlacedTriangle(const Point& a, const Point& b, const Point& c)
    : corners{a, b, c}, normal(triNormal(a, b, c))
{
    const Vector to = c - b, from = a - b;
    const double slenderness = to.length() * from.length() / cross(to, from).length();
    loss = std::isfinite(slenderness) ? rounding * slenderness : rounding;
}

double PlacedTriangle::signedDistance(const Point& point) const
{
    const Vector v = point - corners[0];
    const double distance = dot(normal, v);
    return std::fabs(distance) <= loss * size(v) ? 0.0 : distance;
}

bool liesAside(const Point (&triangle)[3], const Point (&other)[3])
{
    // Twice the rounding, so that what is clear here is clear there.
    const Vector to = other[2] - other[1], from = other[0] - other[1], normal = cross(to, from);
    const double loss = 2 * rounding * size(to) * size(from);
    int side = 0;
    for (const Point& corner : triangle) {
        const Vector v = corner - other[0];
        const double distance = dot(normal, v), lost = loss * size(v);
        side += (distance > lost) - (distance < -lost);
    }
    return side == 3 || side == -3;
}

bool crosses(const PlacedTriangle& a, const PlacedTriangle& b, Point& p, Point& q)
{
    if (equivalent(a.normal, b.normal, znLinear::epsilonTol)) return false;
    double fromB[3], fromA[3];
    distances(a, b, fromB);
    if (onOneSide(fromB)) return false;
    distances(b, a, fromA);
    if (onOneSide(fromA)) return false;
    bool ok;
    const Line line = intersect(Plane(a.corners[0], a.normal), Plane(b.corners[0], b.normal), ok);
    if (!ok) return false;
    const Range1d common = intersect(intervalOf(a, fromB, line), intervalOf(b, fromA, line), znLinear::epsilonTol);
    if (common.size() == 0) return false;
    p = line.eval(common.min);
    q = line.eval(common.max);
    return true;
}

} // namespace internal

bool intersect(const Point& a0, const Point& a1, const Point& a2, const Point& b0, const Point& b1, const Point& b2,
               Point& p, Point& q)
{
    return internal::crosses(internal::PlacedTriangle(a0, a1, a2), internal::PlacedTriangle(b0, b1, b2), p, q);
}

namespace {

/// A triangle seen from a plane, and where its corners and edges are met.
class SeenFromPlane
{
public:
    SeenFromPlane(const double* plane, const Point& p0, const Point& p1, const Point& p2, double tolerance)
        : m_corners{&p0, &p1, &p2}
    {
        for (int i = 0; i < 3; ++i) {
            const double distance = dot(Vector(plane), m_corners[i]->asVector()) + plane[3];
            m_distances[i] = std::fabs(distance) < tolerance ? 0.0 : distance;
        }
    }

    int sign(int corner) const { return (m_distances[corner] > 0) - (m_distances[corner] < 0); }
    int numOnPlane() const { return (sign(0) == 0) + (sign(1) == 0) + (sign(2) == 0); }
    /// The first corner on the plane, from a given one on.
    int onPlane(int corner) const
    {
        while (sign(corner) != 0) ++corner;
        return corner;
    }
    /// The corner that is alone on its side, where none lies on the plane.
    int alone() const { return sign(0) == sign(1) ? 2 : sign(1) == sign(2) ? 0 : 1; }

    void meetCorner(int corner, Point& at, double& t, int (&edge)[2]) const
    {
        at = *m_corners[corner];
        t = 1;
        edge[0] = edge[1] = corner;
    }
    /// On the edge that begins at a corner.
    void meetEdge(int from, Point& at, double& t, int (&edge)[2]) const
    {
        const int to = cornerAfter(from);
        t = m_distances[from] / (m_distances[from] - m_distances[to]);
        at = (m_corners[from]->asVector() * (1 - t) + m_corners[to]->asVector() * t).asPoint();
        edge[0] = to;
        edge[1] = from;
    }

private:
    const Point* m_corners[3];
    double m_distances[3];
};

} // namespace

int intersect(const double* const plane, const Point& p0, const Point& p1, const Point& p2, double tolerance, Point& a,
              double& ta, int (&edgeA)[2], Point& b, double& tb, int (&edgeB)[2])
{
    const SeenFromPlane seen(plane, p0, p1, p2, tolerance);
    const int sum = std::abs(seen.sign(0) + seen.sign(1) + seen.sign(2)), numOnPlane = seen.numOnPlane();
    if (sum == 3) return 0;
    if (numOnPlane == 3) return 3;
    if (numOnPlane == 0) {
        seen.meetEdge(cornerBefore(seen.alone()), a, ta, edgeA);
        seen.meetEdge(seen.alone(), b, tb, edgeB);
        return 2;
    }
    const int corner = seen.onPlane(0);
    seen.meetCorner(corner, a, ta, edgeA);
    if (sum == 2) return 1;
    if (numOnPlane == 2)
        seen.meetCorner(seen.onPlane(corner + 1), b, tb, edgeB);
    else
        seen.meetEdge(cornerAfter(corner), b, tb, edgeB);
    return 2;
}

int intersect(const double* const plane, const Point& p0, const Point& p1, const Point& p2, double tolerance, Point& a,
              Point& b)
{
    double ta, tb;
    int edgeA[2], edgeB[2];
    return intersect(plane, p0, p1, p2, tolerance, a, ta, edgeA, b, tb, edgeB);
}

} // namespace znGeom
