/// Directions and differences of points, in `double` and `float`, in space and in the plane.
///
/// `Vector::x`, `Vector::zero` and their kin are constants, so the components of a vector are `dx`, `dy` and `dz`,
/// or `v[0]` to `v[2]`.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "znGeom/foundation/linear/narrow.h"
#include "znGeom/foundation/linear/tolerance.h"

namespace znLinear {

template <typename T>
struct PointT;
template <typename T>
struct Point2T;
struct Normal;

/// Scales a vector to length 1; `largest` is the largest magnitude of its components. False, with the vector unchanged,
/// when that is 0 or a component is not finite. Squares that vanish or overflow do no harm.
template <typename V, typename T>
bool normalizeInPlace(V& v, T largest)
{
    constexpr T low = std::numeric_limits<T>::min() / std::numeric_limits<T>::epsilon();
    const T l2 = v.length2();
    if (!(largest > 0) || !std::isfinite(largest) || std::isnan(l2)) return false;
    if (!(l2 > low) || !std::isfinite(l2)) v /= largest;
    v /= v.length();
    return true;
}

template <typename T>
struct VectorT
{
    T dx = 0, dy = 0, dz = 0;

    static const VectorT zero, x, y, z;

    constexpr VectorT() = default;
    constexpr VectorT(T dx_, T dy_, T dz_) : dx(dx_), dy(dy_), dz(dz_) {}
    explicit constexpr VectorT(const T* values) : dx(values[0]), dy(values[1]), dz(values[2]) {}

    /// Widening is implicit, narrowing is asked for.
    template <typename U>
    explicit(sizeof(U) > sizeof(T)) constexpr VectorT(const VectorT<U>& other) requires(!std::is_same_v<T, U>)
        : dx(inPrecision<T>(other.dx)), dy(inPrecision<T>(other.dy)), dz(inPrecision<T>(other.dz))
    {}

    constexpr T& operator[](int axis) { return axis == 0 ? dx : axis == 1 ? dy : dz; }
    constexpr const T& operator[](int axis) const { return axis == 0 ? dx : axis == 1 ? dy : dz; }

    constexpr void set(T x_, T y_, T z_) { dx = x_, dy = y_, dz = z_; }
    constexpr void set(const T* values) { set(values[0], values[1], values[2]); }
    constexpr void get(T* values) const { values[0] = dx, values[1] = dy, values[2] = dz; }

    constexpr VectorT& operator+=(const VectorT& v) { return dx += v.dx, dy += v.dy, dz += v.dz, *this; }
    constexpr VectorT& operator-=(const VectorT& v) { return dx -= v.dx, dy -= v.dy, dz -= v.dz, *this; }
    constexpr VectorT& operator*=(T factor) { return dx *= factor, dy *= factor, dz *= factor, *this; }
    constexpr VectorT& operator/=(T divisor) { return dx /= divisor, dy /= divisor, dz /= divisor, *this; }

    /// Turns the vector round, in place.
    constexpr void reverse() { dx = -dx, dy = -dy, dz = -dz; }

    constexpr T length2() const { return dx * dx + dy * dy + dz * dz; }
    T length() const { return std::sqrt(length2()); }

    /// Scales to length 1. False, with the vector unchanged, when it has no length: exactly zero, or not finite.
    bool normalize() { return normalizeInPlace(*this, std::max({std::fabs(dx), std::fabs(dy), std::fabs(dz)})); }

    /// The unit direction of this vector, invalid when it has no length.
    Normal normalized() const;

    /// The point that this vector reaches from the origin.
    constexpr PointT<T> asPoint() const;

    /// Some vector at right angles: the cross product with the axis of smallest magnitude, the first one on ties.
    constexpr VectorT orthogonalVector() const;

    friend constexpr bool operator==(const VectorT&, const VectorT&) = default;
};

template <typename T>
inline constexpr VectorT<T> VectorT<T>::zero{0, 0, 0};
template <typename T>
inline constexpr VectorT<T> VectorT<T>::x{1, 0, 0};
template <typename T>
inline constexpr VectorT<T> VectorT<T>::y{0, 1, 0};
template <typename T>
inline constexpr VectorT<T> VectorT<T>::z{0, 0, 1};

using Vector = VectorT<double>;
using VectorFlt = VectorT<float>;

static_assert(sizeof(Vector) == 3 * sizeof(double) && sizeof(VectorFlt) == 3 * sizeof(float));
static_assert(std::is_trivially_copyable_v<Vector> && std::is_trivially_copyable_v<VectorFlt>);

template <typename T>
constexpr VectorT<T> operator+(VectorT<T> a, const VectorT<T>& b)
{
    return a += b;
}
template <typename T>
constexpr VectorT<T> operator-(VectorT<T> a, const VectorT<T>& b)
{
    return a -= b;
}
template <typename T>
constexpr VectorT<T> operator-(const VectorT<T>& v)
{
    return {-v.dx, -v.dy, -v.dz};
}
template <typename T>
constexpr VectorT<T> operator*(VectorT<T> v, std::type_identity_t<T> factor)
{
    return v *= factor;
}
template <typename T>
constexpr VectorT<T> operator*(std::type_identity_t<T> factor, VectorT<T> v)
{
    return v *= factor;
}
template <typename T>
constexpr VectorT<T> operator/(VectorT<T> v, std::type_identity_t<T> divisor)
{
    return v /= divisor;
}

template <typename T>
constexpr T dot(const VectorT<T>& a, const VectorT<T>& b)
{
    return a.dx * b.dx + a.dy * b.dy + a.dz * b.dz;
}

/// The cross product; never normalised.
template <typename T>
constexpr VectorT<T> cross(const VectorT<T>& a, const VectorT<T>& b)
{
    return {a.dy * b.dz - a.dz * b.dy, a.dz * b.dx - a.dx * b.dz, a.dx * b.dy - a.dy * b.dx};
}

template <typename T>
constexpr VectorT<T> VectorT<T>::orthogonalVector() const
{
    const T ax = dx < 0 ? -dx : dx, ay = dy < 0 ? -dy : dy, az = dz < 0 ? -dz : dz;
    if (ax <= ay && ax <= az) return cross(*this, x);
    return cross(*this, ay <= az ? y : z);
}

/// The sum of `count` vectors, each times its weight.
template <typename T>
constexpr VectorT<T> combine(int count, const T* weights, const VectorT<T>* vectors)
{
    VectorT<T> sum;
    for (int i = 0; i < count; ++i) sum += vectors[i] * weights[i];
    return sum;
}

/// The mean of `count` vectors; zero for none.
template <typename T>
constexpr VectorT<T> combine(int count, const VectorT<T>* vectors)
{
    VectorT<T> sum;
    for (int i = 0; i < count; ++i) sum += vectors[i];
    return count > 0 ? sum / T(count) : sum;
}

/// Within the tolerance in each component.
template <typename T>
constexpr bool equivalent(const VectorT<T>& a, const VectorT<T>& b, std::type_identity_t<T> tol)
{
    return equivalent(a.dx, b.dx, tol) && equivalent(a.dy, b.dy, tol) && equivalent(a.dz, b.dz, tol);
}

/// A vector of the plane.
template <typename T>
struct Vector2T
{
    T dx = 0, dy = 0;

    static const Vector2T zero, x, y;

    constexpr Vector2T() = default;
    constexpr Vector2T(T dx_, T dy_) : dx(dx_), dy(dy_) {}

    template <typename U>
    explicit(sizeof(U) > sizeof(T)) constexpr Vector2T(const Vector2T<U>& other) requires(!std::is_same_v<T, U>)
        : dx(inPrecision<T>(other.dx)), dy(inPrecision<T>(other.dy))
    {}

    constexpr T& operator[](int axis) { return axis == 0 ? dx : dy; }
    constexpr const T& operator[](int axis) const { return axis == 0 ? dx : dy; }

    constexpr void set(T x_, T y_) { dx = x_, dy = y_; }

    constexpr Vector2T& operator+=(const Vector2T& v) { return dx += v.dx, dy += v.dy, *this; }
    constexpr Vector2T& operator-=(const Vector2T& v) { return dx -= v.dx, dy -= v.dy, *this; }
    constexpr Vector2T& operator*=(T factor) { return dx *= factor, dy *= factor, *this; }
    constexpr Vector2T& operator/=(T divisor) { return dx /= divisor, dy /= divisor, *this; }

    constexpr T length2() const { return dx * dx + dy * dy; }
    T length() const { return std::sqrt(length2()); }

    /// Scales to length 1. False, with the vector unchanged, when it has no length: exactly zero, or not finite.
    bool normalize() { return normalizeInPlace(*this, std::max(std::fabs(dx), std::fabs(dy))); }

    friend constexpr bool operator==(const Vector2T&, const Vector2T&) = default;
};

template <typename T>
inline constexpr Vector2T<T> Vector2T<T>::zero{0, 0};
template <typename T>
inline constexpr Vector2T<T> Vector2T<T>::x{1, 0};
template <typename T>
inline constexpr Vector2T<T> Vector2T<T>::y{0, 1};

using Vector2 = Vector2T<double>;
using Vector2Flt = Vector2T<float>;

template <typename T>
constexpr Vector2T<T> operator+(Vector2T<T> a, const Vector2T<T>& b)
{
    return a += b;
}
template <typename T>
constexpr Vector2T<T> operator-(Vector2T<T> a, const Vector2T<T>& b)
{
    return a -= b;
}
template <typename T>
constexpr Vector2T<T> operator-(const Vector2T<T>& v)
{
    return {-v.dx, -v.dy};
}
template <typename T>
constexpr Vector2T<T> operator*(Vector2T<T> v, std::type_identity_t<T> factor)
{
    return v *= factor;
}
template <typename T>
constexpr Vector2T<T> operator*(std::type_identity_t<T> factor, Vector2T<T> v)
{
    return v *= factor;
}
template <typename T>
constexpr Vector2T<T> operator/(Vector2T<T> v, std::type_identity_t<T> divisor)
{
    return v /= divisor;
}

template <typename T>
constexpr T dot(const Vector2T<T>& a, const Vector2T<T>& b)
{
    return a.dx * b.dx + a.dy * b.dy;
}

/// The z component of the cross product of two vectors of the plane: positive when `b` lies to the left of `a`.
template <typename T>
constexpr T cross(const Vector2T<T>& a, const Vector2T<T>& b)
{
    return a.dx * b.dy - a.dy * b.dx;
}

/// Within the tolerance in each component.
template <typename T>
constexpr bool equivalent(const Vector2T<T>& a, const Vector2T<T>& b, std::type_identity_t<T> tol)
{
    return equivalent(a.dx, b.dx, tol) && equivalent(a.dy, b.dy, tol);
}

} // namespace znLinear
