/// A unit direction that knows whether it is one.
#pragma once

#include "znGeom/foundation/linear/vector.h"

namespace znLinear {

/// The caller vouches that the values given are of unit length already.
struct Promise
{};

/// Three components of unit length and a flag. When it is made from a vector without length, the flag is false and the
/// components are 0; every use that depends on the direction tests `valid` first.
struct Normal
{
    double dx = 0, dy = 0, dz = 0;
    bool valid = false;

    static const Normal x, y, z;

    constexpr Normal() = default;
    Normal(const Vector& v) { set(v.dx, v.dy, v.dz); }
    Normal(double x_, double y_, double z_) { set(x_, y_, z_); }
    constexpr Normal(Promise, double x_, double y_, double z_) : dx(x_), dy(y_), dz(z_), valid(true) {}

    constexpr double& operator[](int axis) { return axis == 0 ? dx : axis == 1 ? dy : dz; }
    constexpr const double& operator[](int axis) const { return axis == 0 ? dx : axis == 1 ? dy : dz; }

    /// Normalises; without length the components become 0 and the flag false.
    void set(double x_, double y_, double z_)
    {
        Vector v(x_, y_, z_);
        valid = v.normalize();
        if (!valid) v = Vector();
        dx = v.dx, dy = v.dy, dz = v.dz;
    }
    void set(const double* values) { set(values[0], values[1], values[2]); }
    constexpr void set(Promise, const double* values) { *this = Normal(Promise(), values[0], values[1], values[2]); }
    constexpr void get(double* values) const { values[0] = dx, values[1] = dy, values[2] = dz; }

    constexpr bool isValid() const { return valid; }
    constexpr Vector asVector() const { return {dx, dy, dz}; }

    /// The point of the unit sphere in this direction.
    constexpr PointT<double> asPoint() const;

    friend constexpr bool operator==(const Normal&, const Normal&) = default;
};

inline constexpr Normal Normal::x{Promise(), 1, 0, 0};
inline constexpr Normal Normal::y{Promise(), 0, 1, 0};
inline constexpr Normal Normal::z{Promise(), 0, 0, 1};

template <typename T>
Normal VectorT<T>::normalized() const
{
    return Normal(double(dx), double(dy), double(dz));
}

/// The opposite direction, as valid as the given one.
constexpr Normal operator-(const Normal& n)
{
    Normal reversed = n;
    reversed.dx = -n.dx, reversed.dy = -n.dy, reversed.dz = -n.dz;
    return reversed;
}

constexpr Vector operator*(const Normal& n, double factor) { return n.asVector() * factor; }
constexpr Vector operator*(double factor, const Normal& n) { return n.asVector() * factor; }

constexpr double dot(const Normal& a, const Normal& b) { return dot(a.asVector(), b.asVector()); }
constexpr double dot(const Normal& a, const Vector& b) { return dot(a.asVector(), b); }
constexpr double dot(const Vector& a, const Normal& b) { return dot(a, b.asVector()); }

/// Cross products of the mixed kinds; never normalised.
constexpr Vector cross(const Normal& a, const Normal& b) { return cross(a.asVector(), b.asVector()); }
constexpr Vector cross(const Normal& a, const Vector& b) { return cross(a.asVector(), b); }
constexpr Vector cross(const Vector& a, const Normal& b) { return cross(a, b.asVector()); }

/// a * p + b * q
constexpr Vector combine(double a, const Normal& p, double b, const Normal& q) { return p * a + q * b; }

/// The angle between two directions in radians, from 0 to pi; the same whichever comes first.
inline double angle(const Normal& a, const Normal& b) { return std::atan2(cross(a, b).length(), dot(a, b)); }

/// The part of a vector that lies along a direction.
constexpr Vector project(const Vector& v, const Normal& direction) { return direction * dot(v, direction); }

/// Turns a vector about an axis through the origin, counter-clockwise seen from the tip of the axis.
inline Vector rotate(const Vector& v, const Normal& axis, double radians)
{
    const double c = std::cos(radians), s = std::sin(radians);
    return v * c + cross(axis, v) * s + axis * (dot(axis, v) * (1.0 - c));
}

/// True when two directions point the same way: the tolerance is greater than 1 minus their cosine. Opposite directions
/// are not parallel here; a caller that accepts either sense asks twice.
constexpr bool isParallel(const Normal& a, const Normal& b, double tol) { return tol > 1.0 - dot(a, b); }

/// Within the tolerance in each component.
constexpr bool equivalent(const Normal& a, const Normal& b, double tol)
{
    return equivalent(a.asVector(), b.asVector(), tol);
}

} // namespace znLinear
