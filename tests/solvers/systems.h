/// Sparse systems for the tests of the solver.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <initializer_list>

#include "tests/support/random.h"
#include "znGeom/solvers.h"

namespace znTest {

/// The same bits, or NaNs both.
inline bool sameNumber(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

inline bool sameNumbers(const znGeom::NVector& a, const znGeom::NVector& b)
{
    bool same = a.size() == b.size();
    for (int i = 0; same && i < a.size(); ++i) same = sameNumber(a[i], b[i]);
    return same;
}

inline znGeom::NVector vectorOf(std::initializer_list<double> values)
{
    znGeom::NVector v(static_cast<int>(values.size()));
    for (int i = 0; i < v.size(); ++i) v[i] = values.begin()[i];
    return v;
}

inline znGeom::NVector randomVector(int n, Random& random)
{
    znGeom::NVector v(n);
    for (int i = 0; i < n; ++i) v[i] = random.real(-1, 1);
    return v;
}

/// The Laplacian of a random connected graph, entries in random order, with a little added to the diagonal: symmetric,
/// positive definite, an M-matrix. Here and there a zero is stored.
inline znGeom::SparseMatrix randomLaplacian(int n, double shift, Random& random)
{
    znGeom::SparseMatrix matrix(n);
    for (int i = 1; i < 4 * n; ++i) {
        const int a = i < n ? i : random.below(n), b = random.below(i < n ? i : n);
        const double weight = i > n && random.oneIn(3) ? 0.0 : random.real(0.1, 1);
        if (a == b) continue;
        matrix.addToElement(a, b, -weight), matrix.addToElement(b, a, -weight);
        matrix.addToElement(a, a, weight), matrix.addToElement(b, b, weight);
    }
    for (int i = 0; i < n; ++i) matrix.addToElement(i, i, shift * random.real(1, 2));
    return matrix;
}

} // namespace znTest
