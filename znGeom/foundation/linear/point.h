/// Positions, in `double` and `float`, in space and in the plane.
#pragma once

#include "znGeom/foundation/linear/normal.h"
#include "znGeom/foundation/linear/vector.h"

namespace znLinear {

/// A position of the plane.
template <typename T>
struct Point2T
{
    T x = 0, y = 0;

    static const Point2T origin;

    constexpr Point2T() = default;
    constexpr Point2T(T x_, T y_) : x(x_), y(y_) {}

    /// Widening is implicit, narrowing is asked for.
    template <typename U>
    explicit(sizeof(U) > sizeof(T)) constexpr Point2T(const Point2T<U>& other) requires(!std::is_same_v<T, U>)
        : x(inPrecision<T>(other.x)), y(inPrecision<T>(other.y))
    {}

    constexpr T& operator[](int axis) { return axis == 0 ? x : y; }
    constexpr const T& operator[](int axis) const { return axis == 0 ? x : y; }

    constexpr void set(T x_, T y_) { x = x_, y = y_; }

    constexpr Point2T& operator+=(const Vector2T<T>& v) { return x += v.dx, y += v.dy, *this; }
    constexpr Point2T& operator-=(const Vector2T<T>& v) { return x -= v.dx, y -= v.dy, *this; }

    friend constexpr bool operator==(const Point2T&, const Point2T&) = default;
};

template <typename T>
inline constexpr Point2T<T> Point2T<T>::origin{0, 0};

using Point2 = Point2T<double>;
using Point2Flt = Point2T<float>;

/// A position in space.
template <typename T>
struct PointT
{
    T x = 0, y = 0, z = 0;

    static const PointT origin;

    constexpr PointT() = default;
    constexpr PointT(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}
    explicit constexpr PointT(const T* values) : x(values[0]), y(values[1]), z(values[2]) {}

    /// In the plane z = 0.
    explicit constexpr PointT(const Point2T<T>& p) : x(p.x), y(p.y), z(0) {}

    /// Widening is implicit, narrowing is asked for.
    template <typename U>
    explicit(sizeof(U) > sizeof(T)) constexpr PointT(const PointT<U>& other) requires(!std::is_same_v<T, U>)
        : x(inPrecision<T>(other.x)), y(inPrecision<T>(other.y)), z(inPrecision<T>(other.z))
    {}

    constexpr T& operator[](int axis) { return axis == 0 ? x : axis == 1 ? y : z; }
    constexpr const T& operator[](int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }

    constexpr void set(T x_, T y_, T z_) { x = x_, y = y_, z = z_; }
    constexpr void set(const T* values) { set(values[0], values[1], values[2]); }
    constexpr void get(T* values) const { values[0] = x, values[1] = y, values[2] = z; }

    constexpr PointT& operator+=(const VectorT<T>& v) { return x += v.dx, y += v.dy, z += v.dz, *this; }
    constexpr PointT& operator-=(const VectorT<T>& v) { return x -= v.dx, y -= v.dy, z -= v.dz, *this; }

    /// The vector from the origin to this point.
    constexpr VectorT<T> asVector() const { return {x, y, z}; }

    friend constexpr bool operator==(const PointT&, const PointT&) = default;
};

template <typename T>
inline constexpr PointT<T> PointT<T>::origin{0, 0, 0};

using Point = PointT<double>;
using PointFlt = PointT<float>;

static_assert(sizeof(Point) == 3 * sizeof(double) && sizeof(PointFlt) == 3 * sizeof(float));
static_assert(std::is_trivially_copyable_v<Point> && std::is_trivially_copyable_v<PointFlt>);

template <typename T>
constexpr PointT<T> VectorT<T>::asPoint() const
{
    return {dx, dy, dz};
}

constexpr Point Normal::asPoint() const { return {dx, dy, dz}; }

template <typename T>
constexpr PointT<T> operator+(PointT<T> p, const VectorT<T>& v)
{
    return p += v;
}
template <typename T>
constexpr PointT<T> operator-(PointT<T> p, const VectorT<T>& v)
{
    return p -= v;
}
template <typename T>
constexpr VectorT<T> operator-(const PointT<T>& a, const PointT<T>& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <typename T>
constexpr Point2T<T> operator+(Point2T<T> p, const Vector2T<T>& v)
{
    return p += v;
}
template <typename T>
constexpr Point2T<T> operator-(Point2T<T> p, const Vector2T<T>& v)
{
    return p -= v;
}
template <typename T>
constexpr Vector2T<T> operator-(const Point2T<T>& a, const Point2T<T>& b)
{
    return {a.x - b.x, a.y - b.y};
}

/// Squared distance, in the precision of the points.
template <typename T>
constexpr T distance2(const PointT<T>& a, const PointT<T>& b)
{
    return (a - b).length2();
}
template <typename T>
constexpr T distance2(const Point2T<T>& a, const Point2T<T>& b)
{
    return (a - b).length2();
}

/// Distance, in the precision of the points.
template <typename T>
T distance(const PointT<T>& a, const PointT<T>& b)
{
    return (a - b).length();
}
template <typename T>
T distance(const Point2T<T>& a, const Point2T<T>& b)
{
    return (a - b).length();
}

/// a * p + b * q
template <typename T>
constexpr PointT<T> combine(std::type_identity_t<T> a, const PointT<T>& p, std::type_identity_t<T> b,
                            const PointT<T>& q)
{
    return {a * p.x + b * q.x, a * p.y + b * q.y, a * p.z + b * q.z};
}
template <typename T>
constexpr Point2T<T> combine(std::type_identity_t<T> a, const Point2T<T>& p, std::type_identity_t<T> b,
                             const Point2T<T>& q)
{
    return {a * p.x + b * q.x, a * p.y + b * q.y};
}

/// The midpoint.
template <typename T>
constexpr PointT<T> combine(const PointT<T>& p, const PointT<T>& q)
{
    return combine(T(0.5), p, T(0.5), q);
}
template <typename T>
constexpr Point2T<T> combine(const Point2T<T>& p, const Point2T<T>& q)
{
    return combine(T(0.5), p, T(0.5), q);
}

/// Within the tolerance in each component.
template <typename T>
constexpr bool equivalent(const PointT<T>& a, const PointT<T>& b, std::type_identity_t<T> tol)
{
    return equivalent(a.asVector(), b.asVector(), tol);
}
template <typename T>
constexpr bool equivalent(const Point2T<T>& a, const Point2T<T>& b, std::type_identity_t<T> tol)
{
    return equivalent(a.x, b.x, tol) && equivalent(a.y, b.y, tol);
}

} // namespace znLinear
