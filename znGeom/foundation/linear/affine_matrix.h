/// Affine transforms of space and of the plane. Points and vectors are row vectors, multiplied from the left.
#pragma once

#include "znGeom/foundation/linear/point.h"

namespace znLinear {

/// Four rows of three: rows 0 to 2 are the linear part, row 3 is the translation, so that
/// x' = x*m[0][0] + y*m[1][0] + z*m[2][0] + m[3][0], and so on for each column. `a * b` applies `a` first.
template <typename T>
struct AffineMatrixT
{
    T m[4][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};

    static const AffineMatrixT Identity;

    /// The identity.
    constexpr AffineMatrixT() = default;
    /// The linear diagonal set to `diagonal`, everything else zero.
    explicit constexpr AffineMatrixT(T diagonal) { m[0][0] = m[1][1] = m[2][2] = diagonal; }

    template <typename U>
    explicit(sizeof(U) >
             sizeof(T)) constexpr AffineMatrixT(const AffineMatrixT<U>& other) requires(!std::is_same_v<T, U>)
    {
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 3; ++column) m[row][column] = inPrecision<T>(other.m[row][column]);
    }

    static constexpr AffineMatrixT identity() { return AffineMatrixT(); }

    constexpr T* operator[](int row) { return m[row]; }
    constexpr const T* operator[](int row) const { return m[row]; }
    constexpr VectorT<T> row(int i) const { return VectorT<T>(m[i]); }
    constexpr void setRow(int i, const VectorT<T>& v) { v.get(m[i]); }

    /// Rows u, v, w and the point p: takes coordinates in that frame to the world.
    constexpr void setFrame(const PointT<T>& p, const VectorT<T>& u, const VectorT<T>& v, const VectorT<T>& w)
    {
        setRow(0, u), setRow(1, v), setRow(2, w), setRow(3, p.asVector());
    }

    /// The rotation that takes direction `from` to direction `to`, without translation. Opposite directions are
    /// joined by a half turn about `from`'s `orthogonalVector`. The identity when either is invalid.
    void rotate(const Normal& from, const Normal& to);

    /// The determinant of the linear part.
    constexpr T det3x3() const { return dot(row(0), cross(row(1), row(2))); }

    /// Inverts in place. False, with the matrix unchanged, when it is singular: the determinant is 0 or not finite.
    bool invert();

    /// The inverse; the matrix itself when it is singular.
    AffineMatrixT inverse() const
    {
        AffineMatrixT result = *this;
        result.invert();
        return result;
    }

    /// this = other * this: `other` is applied first from now on.
    constexpr void preMult(const AffineMatrixT& other);

    /// The inverse transpose of the linear part, with no translation: what normals are multiplied with. `ok` is
    /// false, and the result the identity, when the matrix is singular.
    AffineMatrixT normalMatrix(bool& ok) const;

    friend constexpr bool operator==(const AffineMatrixT&, const AffineMatrixT&) = default;
};

template <typename T>
inline constexpr AffineMatrixT<T> AffineMatrixT<T>::Identity{};

using AffineMatrix = AffineMatrixT<double>;
using AffineMatrixFlt = AffineMatrixT<float>;

// Loops over vertices index the twelve numbers directly.
static_assert(sizeof(AffineMatrixFlt) == 12 * sizeof(float) && sizeof(AffineMatrix) == 12 * sizeof(double));
static_assert(std::is_trivially_copyable_v<AffineMatrix> && std::is_trivially_copyable_v<AffineMatrixFlt>);

template <typename T>
constexpr VectorT<T> operator*(const VectorT<T>& v, const AffineMatrixT<T>& a)
{
    VectorT<T> result;
    for (int c = 0; c < 3; ++c) result[c] = v.dx * a.m[0][c] + v.dy * a.m[1][c] + v.dz * a.m[2][c];
    return result;
}
template <typename T>
constexpr PointT<T> operator*(const PointT<T>& p, const AffineMatrixT<T>& a)
{
    PointT<T> result;
    for (int c = 0; c < 3; ++c) result[c] = p.x * a.m[0][c] + p.y * a.m[1][c] + p.z * a.m[2][c] + a.m[3][c];
    return result;
}
template <typename T>
constexpr AffineMatrixT<T> operator*(const AffineMatrixT<T>& a, const AffineMatrixT<T>& b)
{
    AffineMatrixT<T> result;
    for (int i = 0; i < 3; ++i) result.setRow(i, a.row(i) * b);
    result.setRow(3, (a.row(3).asPoint() * b).asVector());
    return result;
}

template <typename T>
constexpr void AffineMatrixT<T>::preMult(const AffineMatrixT& other)
{
    *this = other * *this;
}

template <typename T>
bool AffineMatrixT<T>::invert()
{
    const T det = det3x3();
    if (det == 0 || !std::isfinite(det)) return false;
    const VectorT<T> columns[3] = {cross(row(1), row(2)) / det, cross(row(2), row(0)) / det,
                                   cross(row(0), row(1)) / det};
    AffineMatrixT inverted;
    for (int i = 0; i < 3; ++i)
        for (int c = 0; c < 3; ++c) inverted.m[i][c] = columns[c][i];
    inverted.setRow(3, VectorT<T>());
    inverted.setRow(3, -(row(3) * inverted));
    *this = inverted;
    return true;
}

template <typename T>
AffineMatrixT<T> AffineMatrixT<T>::normalMatrix(bool& ok) const
{
    AffineMatrixT inverted = *this, transposed;
    ok = inverted.invert();
    if (!ok) return transposed;
    for (int i = 0; i < 3; ++i)
        for (int c = 0; c < 3; ++c) transposed.m[i][c] = inverted.m[c][i];
    return transposed;
}

template <typename T>
void AffineMatrixT<T>::rotate(const Normal& from, const Normal& to)
{
    // Of directions that are nearly opposite the cross product tells no axis: a half turn about an axis at right angles
    // to `from` brings that round, and only the small rest is turned.
    *this = AffineMatrixT();
    if (!from.valid || !to.valid) return;
    constexpr double nearlyOpposite = 1e-4;
    const bool halfTurn = dot(from, to) < 0 && cross(from, to).length() < nearlyOpposite;
    const Normal half(from.asVector().orthogonalVector());
    const Normal start = halfTurn ? -from : from;
    const Normal axis(cross(start, to));
    const double radians = angle(start, to);
    for (int i = 0; i < 3; ++i) {
        Vector image = i == 0 ? Vector::x : i == 1 ? Vector::y : Vector::z;
        if (halfTurn) image = half * (2.0 * dot(image, half)) - image;
        if (axis.valid) image = znLinear::rotate(image, axis, radians);
        setRow(i, VectorT<T>(T(image.dx), T(image.dy), T(image.dz)));
    }
}

/// Within the tolerance in each of the twelve numbers.
template <typename T>
constexpr bool equivalent(const AffineMatrixT<T>& a, const AffineMatrixT<T>& b, std::type_identity_t<T> tol)
{
    for (int i = 0; i < 4; ++i)
        if (!equivalent(a.row(i), b.row(i), tol)) return false;
    return true;
}

/// Three rows of two: the linear part and the translation, for row vectors of the plane.
struct AffineMatrix2
{
    double m[3][2] = {{1, 0}, {0, 1}, {0, 0}};

    constexpr double* operator[](int row) { return m[row]; }
    constexpr const double* operator[](int row) const { return m[row]; }

    /// Rows u, v and the point p: takes coordinates in that frame to the plane.
    constexpr void setFrame(const Point2& p, const Vector2& u, const Vector2& v)
    {
        m[0][0] = u.dx, m[0][1] = u.dy, m[1][0] = v.dx, m[1][1] = v.dy, m[2][0] = p.x, m[2][1] = p.y;
    }

    constexpr double det2x2() const { return m[0][0] * m[1][1] - m[0][1] * m[1][0]; }

    /// The inverse; the matrix itself when it is singular.
    AffineMatrix2 inverse() const
    {
        const double det = det2x2();
        if (det == 0 || !std::isfinite(det)) return *this;
        AffineMatrix2 r;
        r.m[0][0] = m[1][1] / det, r.m[0][1] = -m[0][1] / det;
        r.m[1][0] = -m[1][0] / det, r.m[1][1] = m[0][0] / det;
        r.m[2][0] = -(m[2][0] * r.m[0][0] + m[2][1] * r.m[1][0]);
        r.m[2][1] = -(m[2][0] * r.m[0][1] + m[2][1] * r.m[1][1]);
        return r;
    }
};

constexpr Point2 operator*(const Point2& p, const AffineMatrix2& a)
{
    return {p.x * a.m[0][0] + p.y * a.m[1][0] + a.m[2][0], p.x * a.m[0][1] + p.y * a.m[1][1] + a.m[2][1]};
}

} // namespace znLinear
