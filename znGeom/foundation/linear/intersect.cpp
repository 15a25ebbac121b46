#include "znGeom/foundation/linear/intersect.h"

namespace znLinear {

Point intersect(const Line& line, const Plane& plane, bool& ok, double tol)
{
    const double cosine = dot(line.direction, plane.normal);
    ok = plane.isValid() && cosine != 0 && !(tol > cosine * cosine);
    return ok ? line.eval(-plane.eval(line.point) / cosine) : line.point;
}

Point intersect(const Line& first, const Line& second, bool& ok, double tol)
{
    const Vector common = cross(first.direction, second.direction);
    const double sine2 = common.length2();
    ok = sine2 > 0 && !(tol > sine2);
    if (!ok) return first.point;
    return first.eval(dot(cross(second.point - first.point, second.direction), common) / sine2);
}

Line intersect(const Plane& first, const Plane& second, bool& ok)
{
    const Vector direction = cross(first.normal, second.normal);
    const double sine2 = direction.length2();
    ok = first.isValid() && second.isValid() && sine2 > 0 && !(perpendicular2Tol > sine2);
    if (!ok) return Line(first.point, Vector());
    // From the foot on the first plane, step within that plane to the second.
    const Vector within = cross(direction, first.normal);
    return Line(first.point + within * (-second.eval(first.point) / dot(within, second.normal)), direction);
}

int intersectCylinder(const ParamLine& line, const Line& axis, double radius, double* t)
{
    const Vector across = line.direction - axis.direction * dot(line.direction, axis.direction);
    const Vector offset = line.point - project(line.point, axis);
    const double a = across.length2(), b = dot(across, offset), c = offset.length2() - radius * radius;
    const double discriminant = b * b - a * c;
    const bool alongAxis = !(a > 0) || perpendicular2Tol * line.direction.length2() > a;
    if (alongAxis || !(discriminant >= 0)) return 0;
    if (discriminant == 0) {
        t[0] = -b / a;
        return 1;
    }
    // The root of larger magnitude first; the other from the product of the roots, which loses no digits.
    const double q = b > 0 ? -(b + std::sqrt(discriminant)) : -b + std::sqrt(discriminant);
    t[0] = q / a, t[1] = c / q;
    if (t[1] < t[0]) std::swap(t[0], t[1]);
    return 2;
}

namespace {

/// Two lines of the plane, p + s * u and q + r * v, in the one place where they meet.
struct Crossing
{
    double s = 0, r = 0;
    bool parallel = false;

    Crossing(const Point2& p, const Vector2& u, const Point2& q, const Vector2& v, double tol)
    {
        const double sine = cross(u, v), scale = u.length2() * v.length2();
        parallel = sine == 0 || tol * scale > sine * sine;
        if (parallel) return;
        s = cross(q - p, v) / sine;
        r = cross(q - p, u) / sine;
    }
};

/// The first parameter s in [0, limit] at which p + s * u lies on the segment a to b that runs along u; false when the
/// segment is off that line or out of reach. A `u` without length makes it a point, and the question is whether that
/// lies on a to b.
bool firstCommonParam(const Point2& p, const Vector2& u, double limit, const Point2& a, const Point2& b, double& s)
{
    const Vector2 along = u.length2() > 0 ? u : b - a;
    const double l2 = along.length2();
    if (l2 == 0) return s = 0, p == a;
    if (std::fabs(cross(a - p, along)) > epsilonTol * l2) return false;
    Range1d segment(dot(a - p, along) / l2, dot(b - p, along) / l2);
    if (u.length2() == 0) limit = 0;
    if (segment.max < 0 || segment.min > limit) return false;
    s = std::max(0.0, segment.min);
    return true;
}

/// Whether a parameter lies on a segment; one that rounding put beyond an end is moved back onto it, so that segments
/// that share an end meet there.
bool onSegment(double& param)
{
    if (!Range1d(0, 1).contains(param, epsilonTol)) return false;
    param = std::clamp(param, 0.0, 1.0);
    return true;
}

} // namespace

bool doLineSegmentsIntersect(const Point2& a0, const Point2& a1, const Point2& b0, const Point2& b1, double& t,
                             Point2& meeting, bool& parallel, double tol)
{
    const Crossing crossing(a0, a1 - a0, b0, b1 - b0, tol);
    parallel = crossing.parallel;
    double s = crossing.s, r = crossing.r;
    if (parallel ? !firstCommonParam(a0, a1 - a0, 1.0, b0, b1, s) : !onSegment(s) || !onSegment(r)) return false;
    t = s;
    meeting = a0 + (a1 - a0) * s;
    return true;
}

bool doesRayIntersectLineSegment(const Point2& origin, const Vector2& direction, const Point2& a, const Point2& b,
                                 double& rayParam, double& segmentParam, bool& parallel, double tol)
{
    const Crossing crossing(origin, direction, a, b - a, tol);
    parallel = crossing.parallel;
    double s = crossing.s, r = crossing.r;
    if (parallel) {
        const double noLimit = std::numeric_limits<double>::infinity();
        if (!firstCommonParam(origin, direction, noLimit, a, b, s)) return false;
        const double l2 = (b - a).length2();
        r = l2 > 0 ? dot(origin + direction * s - a, b - a) / l2 : 0.0;
    } else if (!(s > -epsilonTol) || !onSegment(r)) {
        return false;
    }
    rayParam = std::max(s, 0.0);
    segmentParam = r;
    return true;
}

} // namespace znLinear
