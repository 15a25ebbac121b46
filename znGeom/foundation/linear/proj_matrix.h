/// Homogeneous transforms: four rows of four, multiplied from the left by row vectors.
#pragma once

#include "znGeom/foundation/linear/affine_matrix.h"

namespace znLinear {

template <typename T>
struct ProjMatrixT
{
    T m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    /// The identity.
    constexpr ProjMatrixT() = default;
    /// Sixteen values, row by row.
    explicit constexpr ProjMatrixT(const T* values)
    {
        for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = values[i];
    }
    /// The diagonal set to `diagonal`, everything else zero.
    explicit constexpr ProjMatrixT(T diagonal) { m[0][0] = m[1][1] = m[2][2] = m[3][3] = diagonal; }
    /// The same transform as an affine one.
    explicit constexpr ProjMatrixT(const AffineMatrixT<T>& a)
    {
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 3; ++column) m[row][column] = a.m[row][column];
    }

    template <typename U>
    explicit(sizeof(U) > sizeof(T)) constexpr ProjMatrixT(const ProjMatrixT<U>& other) requires(!std::is_same_v<T, U>)
    {
        for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = inPrecision<T>(other.m[i / 4][i % 4]);
    }

    constexpr T* operator[](int row) { return m[row]; }
    constexpr const T* operator[](int row) const { return m[row]; }

    /// Inverts in place. False, with the matrix unchanged, when it is singular: the determinant is 0 or not finite.
    bool invertFast();
};

using ProjMatrix = ProjMatrixT<double>;
using ProjMatrixFlt = ProjMatrixT<float>;

template <typename T>
bool ProjMatrixT<T>::invertFast()
{
    // The 2 by 2 minors of the upper and of the lower pair of rows.
    const auto minor = [this](int row, int a, int b) { return m[row][a] * m[row + 1][b] - m[row][b] * m[row + 1][a]; };
    const T s0 = minor(0, 0, 1), s1 = minor(0, 0, 2), s2 = minor(0, 0, 3);
    const T s3 = minor(0, 1, 2), s4 = minor(0, 1, 3), s5 = minor(0, 2, 3);
    const T c0 = minor(2, 0, 1), c1 = minor(2, 0, 2), c2 = minor(2, 0, 3);
    const T c3 = minor(2, 1, 2), c4 = minor(2, 1, 3), c5 = minor(2, 2, 3);
    const T det = s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
    if (det == 0 || !std::isfinite(det)) return false;
    const T adjugate[16] = {m[1][1] * c5 - m[1][2] * c4 + m[1][3] * c3,  -m[0][1] * c5 + m[0][2] * c4 - m[0][3] * c3,
                            m[3][1] * s5 - m[3][2] * s4 + m[3][3] * s3,  -m[2][1] * s5 + m[2][2] * s4 - m[2][3] * s3,
                            -m[1][0] * c5 + m[1][2] * c2 - m[1][3] * c1, m[0][0] * c5 - m[0][2] * c2 + m[0][3] * c1,
                            -m[3][0] * s5 + m[3][2] * s2 - m[3][3] * s1, m[2][0] * s5 - m[2][2] * s2 + m[2][3] * s1,
                            m[1][0] * c4 - m[1][1] * c2 + m[1][3] * c0,  -m[0][0] * c4 + m[0][1] * c2 - m[0][3] * c0,
                            m[3][0] * s4 - m[3][1] * s2 + m[3][3] * s0,  -m[2][0] * s4 + m[2][1] * s2 - m[2][3] * s0,
                            -m[1][0] * c3 + m[1][1] * c1 - m[1][2] * c0, m[0][0] * c3 - m[0][1] * c1 + m[0][2] * c0,
                            -m[3][0] * s3 + m[3][1] * s1 - m[3][2] * s0, m[2][0] * s3 - m[2][1] * s1 + m[2][2] * s0};
    for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = adjugate[i] / det;
    return true;
}

/// A row of four numbers.
struct Tuple4
{
    double values[4] = {0, 0, 0, 0};

    constexpr Tuple4() = default;
    constexpr Tuple4(double a, double b, double c, double d) : values{a, b, c, d} {}
    constexpr double& operator[](int i) { return values[i]; }
    constexpr const double& operator[](int i) const { return values[i]; }
};

constexpr Tuple4 operator*(const Tuple4& t, const ProjMatrix& p)
{
    Tuple4 result;
    for (int c = 0; c < 4; ++c) result[c] = t[0] * p.m[0][c] + t[1] * p.m[1][c] + t[2] * p.m[2][c] + t[3] * p.m[3][c];
    return result;
}

/// A homogeneous point.
struct HPoint
{
    double x = 0, y = 0, z = 0, w = 1;

    constexpr HPoint() = default;
    constexpr HPoint(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}
    constexpr HPoint(const Point& p) : x(p.x), y(p.y), z(p.z) {}

    /// The point in space: the coordinates divided by w.
    constexpr Point project() const { return {x / w, y / w, z / w}; }

    /// Within the view volume, borders included: x and y, with `testDepth` also z, lie between -w and w. A point with
    /// w of 0 or less is never in view.
    constexpr bool insideView(bool testDepth) const
    {
        return w > 0 && -w <= x && x <= w && -w <= y && y <= w && (!testDepth || (-w <= z && z <= w));
    }
};

constexpr HPoint operator*(const HPoint& p, const ProjMatrix& matrix)
{
    const Tuple4 t = Tuple4(p.x, p.y, p.z, p.w) * matrix;
    return {t[0], t[1], t[2], t[3]};
}

} // namespace znLinear
