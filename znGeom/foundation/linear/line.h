/// Infinite lines: one measured in lengths, one measured in multiples of its own direction vector.
#pragma once

#include "znGeom/foundation/linear/point.h"

namespace znLinear {

/// A line through two points or along a direction, with the parameter tied to the direction as given: from two points,
/// t = 0 is the first and t = 1 the second. It may be without length, and is then just its base point.
struct ParamLine
{
    Point point;
    Vector direction;

    constexpr ParamLine() = default;
    constexpr ParamLine(const Point& first, const Point& second) : point(first), direction(second - first) {}
    constexpr ParamLine(const Point& base, const Vector& along) : point(base), direction(along) {}

    constexpr Point eval(double t) const { return point + direction * t; }

    /// The closest point to `p` with the parameter clamped to [t0, t1].
    constexpr Point projectBounded(const Point& p, double t0, double t1) const;
};

/// An infinite line; its parameter is a length, in the units of the points.
struct Line
{
    Point point;
    Vector direction; ///< of unit length, or zero where the line was made from a direction without length

    constexpr Line() = default;
    Line(const Point& base, const Vector& along) : point(base), direction(along)
    {
        if (!direction.normalize()) direction = Vector();
    }
    Line(const Point& first, const Point& second) : Line(first, second - first) {}
    Line(const ParamLine& line) : Line(line.point, line.direction) {}

    /// The point at a parameter that came from `projectParam` on this line.
    constexpr Point eval(double t) const { return point + direction * t; }
};

/// The parameter of the point on the line that is closest to `p`; 0 for a line without length.
constexpr double projectParam(const Point& p, const ParamLine& line)
{
    const double l2 = line.direction.length2();
    return l2 > 0 ? dot(p - line.point, line.direction) / l2 : 0.0;
}
constexpr double projectParam(const Point& p, const Line& line) { return dot(p - line.point, line.direction); }

/// The point on the line that is closest to `p`.
constexpr Point project(const Point& p, const Line& line) { return line.eval(projectParam(p, line)); }
/// The same, and its parameter.
constexpr Point project(const Point& p, const ParamLine& line, double& t)
{
    return line.eval(t = projectParam(p, line));
}

constexpr Point ParamLine::projectBounded(const Point& p, double t0, double t1) const
{
    const double t = projectParam(p, *this);
    return eval(t < t0 ? t0 : t > t1 ? t1 : t);
}

inline double distance(const Point& p, const Line& line) { return distance(p, project(p, line)); }

} // namespace znLinear
