/// Sparse systems for the tests of the solver, and plain ways to solve them.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

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

inline znGeom::NVector randomVector(int n, Random& random)
{
    znGeom::NVector v(n);
    for (int i = 0; i < n; ++i) v[i] = random.real(-1, 1);
    return v;
}

/// The Laplacian of a random connected graph, entries in random order, with a little added to the diagonal: symmetric,
/// positive definite, an M-matrix. Entries that cancel out to 0 are stored here and there.
inline znGeom::SparseMatrix randomLaplacian(int n, double shift, Random& random)
{
    znGeom::SparseMatrix matrix(n);
    const auto join = [&matrix](int i, int j, double weight) {
        matrix.addToElement(i, j, -weight), matrix.addToElement(j, i, -weight);
        matrix.addToElement(i, i, weight), matrix.addToElement(j, j, weight);
    };
    for (int i = 1; i < n; ++i) join(i, random.below(i), random.real(0.1, 1));
    for (int i = 0; i < 2 * n; ++i) {
        const int a = random.below(n), b = random.below(n);
        if (a == b) continue;
        join(a, b, random.oneIn(3) ? 0.0 : random.real(0.1, 1));
    }
    for (int i = 0; i < n; ++i) matrix.addToElement(i, i, shift * random.real(1, 2));
    return matrix;
}

using Dense = std::vector<std::vector<double>>;

inline Dense toDense(const znGeom::SparseMatrix& matrix)
{
    const auto n = static_cast<std::size_t>(matrix.size());
    Dense dense(n, std::vector<double>(n));
    for (int i = 0; i < matrix.size(); ++i)
        for (const znGeom::SparseElement& element : matrix.row(i))
            dense[static_cast<std::size_t>(i)][static_cast<std::size_t>(element.index)] = element.value;
    return dense;
}

/// Gaussian elimination with partial pivoting.
inline std::vector<double> solveDense(Dense a, const znGeom::NVector& b)
{
    const std::size_t n = a.size();
    for (std::size_t i = 0; i < n; ++i) a[i].push_back(b[static_cast<int>(i)]);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::fabs(a[i][k]) > std::fabs(a[k][k])) std::swap(a[i], a[k]);
        for (std::size_t i = 0; i < n; ++i) {
            const double factor = i == k ? 0.0 : a[i][k] / a[k][k];
            for (std::size_t j = k; j <= n; ++j) a[i][j] -= factor * a[k][j];
        }
    }
    std::vector<double> x;
    for (std::size_t i = 0; i < n; ++i) x.push_back(a[i][n] / a[i][i]);
    return x;
}

} // namespace znTest
