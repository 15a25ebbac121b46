/// Closed intervals on one, two and three axes.
#pragma once

#include <algorithm>
#include <limits>

#include "znGeom/foundation/linear/point.h"

namespace znLinear {

/// An interval of numbers. A default one is empty: it contains nothing, and `include` makes it the value included.
struct Range1d
{
    double min = std::numeric_limits<double>::infinity();
    double max = -std::numeric_limits<double>::infinity();

    constexpr Range1d() = default;
    constexpr Range1d(double value) : min(value), max(value) {}
    constexpr Range1d(double a, double b) { set(a, b); }

    constexpr void set(double value) { min = max = value; }
    /// The two ends, in either order.
    constexpr void set(double a, double b) { min = a < b ? a : b, max = a < b ? b : a; }
    constexpr void setUnbounded() { *this = unbounded(); }
    constexpr void include(double value) { min = value < min ? value : min, max = value > max ? value : max; }
    constexpr void include(const Range1d& r) { min = r.min < min ? r.min : min, max = r.max > max ? r.max : max; }

    constexpr bool isEmpty() const { return !(min <= max); }
    /// max - min, 0 for an empty range.
    constexpr double size() const { return isEmpty() ? 0.0 : max - min; }

    /// Inside, or outside by less than the tolerance.
    constexpr bool contains(double value, double tol) const
    {
        return (min <= value || tol > min - value) && (value <= max || tol > value - max);
    }

    /// They overlap or touch, or the gap between them is less than the tolerance.
    constexpr bool intersects(const Range1d& r, double tol) const
    {
        return !isEmpty() && !r.isEmpty() && (r.min <= max || tol > r.min - max) && (min <= r.max || tol > min - r.max);
    }

    static constexpr Range1d unbounded()
    {
        return {-std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    }

    friend constexpr bool operator==(const Range1d&, const Range1d&) = default;
};

/// The gap between two ranges, 0 where they overlap.
constexpr double distance(const Range1d& a, const Range1d& b)
{
    const double gap = a.min > b.max ? a.min - b.max : b.min - a.max;
    return gap > 0 ? gap : 0;
}

/// The common part of two ranges. A gap of less than the tolerance gives its middle, a wider one an empty range; the
/// size of both is exactly 0.
constexpr Range1d intersect(const Range1d& a, const Range1d& b, double tol)
{
    Range1d common;
    common.min = a.min > b.min ? a.min : b.min;
    common.max = a.max < b.max ? a.max : b.max;
    if (common.min <= common.max) return common;
    if (!a.isEmpty() && !b.isEmpty() && tol > common.min - common.max) return Range1d(0.5 * (common.min + common.max));
    return Range1d();
}

/// A rectangle with sides along the axes.
struct Range2d
{
    Range1d x, y;

    static const Range2d unitSquare;

    constexpr Range2d() = default;
    constexpr Range2d(const Point2& a, const Point2& b) : x(a.x, b.x), y(a.y, b.y) {}

    constexpr Range1d& operator[](int axis) { return axis == 0 ? x : y; }
    constexpr const Range1d& operator[](int axis) const { return axis == 0 ? x : y; }

    constexpr void set(const Point2& p) { x.set(p.x), y.set(p.y); }
    constexpr void include(const Range2d& r) { x.include(r.x), y.include(r.y); }
    constexpr void include(const Point2& p) { x.include(p.x), y.include(p.y); }

    constexpr bool isEmpty() const { return x.isEmpty() || y.isEmpty(); }
    constexpr bool contains(const Point2& p, double tol) const { return x.contains(p.x, tol) && y.contains(p.y, tol); }
    constexpr bool intersects(const Range2d& r, double tol) const
    {
        return x.intersects(r.x, tol) && y.intersects(r.y, tol);
    }
    /// The two extents.
    constexpr Point2 size() const { return {x.size(), y.size()}; }
    constexpr double area() const { return x.size() * y.size(); }
    constexpr Point2 mid() const { return {0.5 * (x.min + x.max), 0.5 * (y.min + y.max)}; }

    friend constexpr bool operator==(const Range2d&, const Range2d&) = default;
};

inline constexpr Range2d Range2d::unitSquare{Point2(0, 0), Point2(1, 1)};

/// A box with sides along the axes.
struct Range3d
{
    Range1d x, y, z;

    constexpr Range3d() = default;
    constexpr Range3d(const Point& a, const Point& b) : x(a.x, b.x), y(a.y, b.y), z(a.z, b.z) {}

    constexpr Range1d& operator[](int axis) { return axis == 0 ? x : axis == 1 ? y : z; }
    constexpr const Range1d& operator[](int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }

    /// The box of the one point at `values`, three numbers.
    constexpr void set(const double* values) { x.set(values[0]), y.set(values[1]), z.set(values[2]); }
    constexpr void include(const double* values) { x.include(values[0]), y.include(values[1]), z.include(values[2]); }
    constexpr void set(const Point& p) { x.set(p.x), y.set(p.y), z.set(p.z); }
    constexpr void include(const Point& p) { x.include(p.x), y.include(p.y), z.include(p.z); }
    constexpr void include(const Range3d& r) { x.include(r.x), y.include(r.y), z.include(r.z); }

    constexpr bool isEmpty() const { return x.isEmpty() || y.isEmpty() || z.isEmpty(); }
    constexpr bool contains(const Point& p, double tol) const
    {
        return x.contains(p.x, tol) && y.contains(p.y, tol) && z.contains(p.z, tol);
    }
    constexpr bool intersects(const Range3d& r, double tol) const
    {
        return x.intersects(r.x, tol) && y.intersects(r.y, tol) && z.intersects(r.z, tol);
    }
    constexpr Point min() const { return {x.min, y.min, z.min}; }
    constexpr Point max() const { return {x.max, y.max, z.max}; }
    constexpr Point mid() const { return {0.5 * (x.min + x.max), 0.5 * (y.min + y.max), 0.5 * (z.min + z.max)}; }
    /// The three extents.
    constexpr Vector size() const { return {x.size(), y.size(), z.size()}; }

    friend constexpr bool operator==(const Range3d&, const Range3d&) = default;
};

} // namespace znLinear
