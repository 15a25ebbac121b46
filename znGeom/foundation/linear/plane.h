/// Planes: one for testing sides, one for making points.
#pragma once

#include "znGeom/foundation/linear/point.h"

namespace znLinear {

/// A point and a unit normal. A default plane, and one whose normal is invalid, is not valid.
struct Plane
{
    Point point;
    Normal normal;

    constexpr Plane() = default;
    constexpr Plane(const Point& p, const Normal& n) : point(p), normal(n) {}

    constexpr bool isValid() const { return normal.valid; }

    /// The signed distance, positive on the side to which the normal points.
    constexpr double eval(const Point& p) const { return dot(normal, p - point); }

    /// The constant d of the plane's equation normal . p + d = 0.
    constexpr double calculateD() const { return -dot(normal, point.asVector()); }
};

/// The unsigned distance.
inline double distance(const Point& p, const Plane& plane) { return std::fabs(plane.eval(p)); }

/// On the normal's side, by more than the tolerance.
constexpr bool isAbove(const Point& p, const Plane& plane, double tol) { return plane.eval(p) > tol; }

/// An origin and two directions that span a plane; any lengths, any angle.
struct ParamPlane
{
    Point origin;
    Vector first = Vector::x, second = Vector::y;

    constexpr ParamPlane() = default;
    constexpr ParamPlane(const Point& o, const Vector& u, const Vector& v) : origin(o), first(u), second(v) {}

    /// origin + u * first + v * second
    constexpr Point eval(double u, double v) const { return origin + first * u + second * v; }

    /// The third axis: the unit normal of the two directions, invalid when they span no plane.
    Normal third() const { return Normal(cross(first, second)); }
};

} // namespace znLinear
