#include "znGeom/solvers/preconditioner.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/solvers/systems.h"

using znGeom::IncompleteCholeskyPreconditioner;
using znGeom::NVector;
using znGeom::SparseElement;
using znGeom::SparseMatrix;
using znTest::vectorOf;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Incomplete Cholesky as it is in books: every row looks at all rows before it.
class PlainFactors
{
public:
    explicit PlainFactors(const SparseMatrix& matrix) : m_n(matrix.size())
    {
        for (int i = 0; i < m_n; ++i) {
            m_upper.emplace_back();
            for (const SparseElement& element : matrix.row(i))
                if (element.index >= i) m_upper.back().append(element);
        }
        for (int i = 0; i < m_n; ++i) {
            for (int k = 0; k < i; ++k)
                for (SparseElement& element : row(i))
                    if (element.value != 0) element.value -= at(k, i) * at(k, element.index);
            double root = 0;
            for (SparseElement& element : row(i))
                if (element.index == i) root = element.value = std::sqrt(element.value);
            for (SparseElement& element : row(i))
                if (element.index != i) element.value /= root;
        }
    }

    NVector applyInverse(NVector z)
    {
        for (int i = 0; i < m_n; ++i) {
            for (int k = 0; k < i; ++k)
                for (const SparseElement& element : row(k))
                    if (element.index == i) z[i] -= z[k] * element.value;
            z[i] /= at(i, i);
        }
        for (int i = m_n - 1; i >= 0; --i) {
            for (const SparseElement& element : row(i))
                if (element.index != i) z[i] -= z[element.index] * element.value;
            z[i] /= at(i, i);
        }
        return z;
    }

private:
    zn::vector<SparseElement>& row(int i) { return m_upper[static_cast<std::size_t>(i)]; }
    double at(int i, int j)
    {
        for (const SparseElement& element : row(i))
            if (element.index == j) return element.value;
        return 0;
    }

    int m_n;
    std::vector<zn::vector<SparseElement>> m_upper;
};

NVector applied(const znGeom::Preconditioner& preconditioner, const NVector& r)
{
    NVector z(r.size());
    preconditioner.applyInverse(r, z);
    return z;
}

} // namespace

TEST(DiagonalPreconditioner, DividesByTheDiagonal)
{
    SparseMatrix matrix(3);
    matrix.addToElement(0, 0, 4);
    matrix.addToElement(1, 0, 4);
    matrix.addToElement(2, 2, -0.5);
    const znGeom::DiagonalPreconditioner preconditioner(matrix);
    matrix.setToZero(0);
    const NVector z = applied(preconditioner, vectorOf({1, 1, 1}));
    EXPECT_TRUE(znTest::sameNumbers(z, vectorOf({0.25, infinity, -2}))) << "no entry on the diagonal of row 1";
}

TEST(IncompleteCholesky, HasTheBitsOfThePlainAlgorithm)
{
    znTest::Random random(3);
    for (int round = 0; round < 300; ++round) {
        const int n = 1 + random.below(20);
        SparseMatrix matrix = znTest::randomLaplacian(n, 0.5, random);
        // Entries and pivots that are no good for it: missing, of the wrong sign, not finite; and whatever spreads.
        for (int k = round % 3 == 0 ? 0 : random.below(4); k > 0; --k) {
            const double values[] = {infinity, -infinity, std::nan(""), -5, 1, 1e300};
            const int i = random.below(n), j = random.below(n);
            const double value = values[random.below(6)];
            matrix.addToElement(i, j, value);
            if (i != j) matrix.addToElement(j, i, value);
        }
        // One diagonal entry may be missing.
        SparseMatrix gap(n);
        const int missing = random.below(4 * n);
        for (int i = 0; i < n; ++i)
            for (const SparseElement& element : matrix.row(i))
                if (i != missing || element.index != i) gap.addToElement(i, element.index, element.value);
        matrix = gap;

        PlainFactors plain(matrix);
        const IncompleteCholeskyPreconditioner preconditioner(matrix);
        const NVector r = znTest::randomVector(n, random);
        ASSERT_TRUE(znTest::sameNumbers(applied(preconditioner, r), plain.applyInverse(r))) << round;
    }
}

TEST(IncompleteCholesky, IsExactWithoutFillInAndKeepsThePattern)
{
    // A chain has no fill-in, whatever its numbering.
    const int n = 40;
    SparseMatrix chain(n);
    for (int i = 0; i < n; ++i) chain.addToElement(i, i, 3);
    for (int i = 0; i + 1 < n; ++i) chain.addToElement(i, i + 1, -1), chain.addToElement(i + 1, i, -1);
    znTest::Random random(4);
    const NVector x = znTest::randomVector(n, random);
    NVector b(n);
    chain.getMatrixTimesVector(x, b);
    const NVector z = applied(IncompleteCholeskyPreconditioner(chain), b);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(z[i], x[i], 1e-14);

    // (1, 2) would fill in: not stored it stays away, stored as a zero it stays a zero.
    SparseMatrix star(3);
    for (int i = 0; i < 3; ++i) star.addToElement(i, i, 4);
    for (int i = 1; i < 3; ++i) star.addToElement(0, i, -2), star.addToElement(i, 0, -2);
    const NVector r = vectorOf({0, 3, 6});
    const NVector without = applied(IncompleteCholeskyPreconditioner(star), r);
    star.addToElement(1, 2, 0.0);
    star.addToElement(2, 1, 0.0);
    EXPECT_TRUE(znTest::sameNumbers(applied(IncompleteCholeskyPreconditioner(star), r), without));
    EXPECT_NEAR(without[2], 2, 1e-15) << "L = (2; -1 root 3; -1 0 root 3)";
}
