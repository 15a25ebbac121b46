#include "znGeom/spatial/shapes/triangle_intersect.h"

#include <algorithm>
#include <cmath>

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

/// How far the corners of a triangle are from the plane of another: 0 where the sign is unknown.
struct Distances
{
    double at[3], loss[3];

    Distances(const PlacedTriangle& triangle, const PlacedTriangle& other)
    {
        for (int i = 0; i < 3; ++i) {
            const Vector v = triangle.corners[i] - other.corners[0];
            loss[i] = other.loss * size(v);
            at[i] = dot(other.normal, v);
            if (std::fabs(at[i]) <= loss[i]) at[i] = 0;
        }
    }

    bool isZero(int corner) const { return at[corner] == 0; }
    bool straddles(int i, int j) const { return (at[i] < 0 && at[j] > 0) || (at[i] > 0 && at[j] < 0); }
    bool onOneSide() const { return (at[0] > 0 && at[1] > 0 && at[2] > 0) || (at[0] < 0 && at[1] < 0 && at[2] < 0); }
};

/// What a triangle has in common with the line in which both planes meet.
struct PartOfLine
{
    Range1d along;
    double loss = 0; ///< by how much the ends may be off

    /// From the corners that lie on the other plane to where edges pass through it; empty where the triangle lies in
    /// that plane as a whole.
    PartOfLine(const PlacedTriangle& triangle, const Distances& d, const Line& line)
    {
        if (d.isZero(0) && d.isZero(1) && d.isZero(2)) return;
        double s[3];
        for (int i = 0; i < 3; ++i) {
            const Vector v = triangle.corners[i] - line.point;
            s[i] = dot(v, line.direction);
            loss = std::max(loss, 0x1p-51 * size(v));
        }
        constexpr int edges[3][2] = {{0, 1}, {1, 2}, {0, 2}};
        for (const auto [i, j] : edges) {
            if (!d.straddles(i, j)) continue;
            const double slope = (s[j] - s[i]) / (d.at[i] - d.at[j]);
            along.include(s[i] + slope * d.at[i]);
            loss = std::max(loss, 2 * std::fabs(slope) * (d.loss[i] + d.loss[j]));
        }
        // To the last bit, so that what touches there has nothing else in common.
        for (int i = 0; i < 3; ++i)
            if (d.isZero(i)) along.include(s[i]);
    }
};

} // namespace

PlacedTriangle::PlacedTriangle(const Point& a, const Point& b, const Point& c)
    : corners{a, b, c}, normal(cross(c - b, a - b))
{
    const Vector to = c - b, from = a - b;
    loss = rounding * to.length() * from.length() / cross(to, from).length();
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
    if (!a.normal.valid || !b.normal.valid || equivalent(a.normal, b.normal, znLinear::epsilonTol)) return false;
    const Distances fromB(a, b);
    if (fromB.onOneSide()) return false;
    const Distances fromA(b, a);
    if (fromA.onOneSide()) return false;
    bool ok;
    const Line line = intersect(Plane(a.corners[0], a.normal), Plane(b.corners[0], b.normal), ok);
    if (!ok) return false;
    const PartOfLine ofA(a, fromB, line), ofB(b, fromA, line);
    const Range1d common = intersect(ofA.along, ofB.along, znLinear::epsilonTol);
    if (!(common.size() > ofA.loss + ofB.loss)) return false;
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
