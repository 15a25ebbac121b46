#include "znGeom/solvers/internal/row_stripes.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/solvers/systems.h"

using znGeom::NVector;
using znGeom::SparseMatrix;
using znGeom::internal::RowStripes;

namespace {

/// Multiplies in both forms.
testing::AssertionResult haveSameBits(const RowStripes& stripes, const SparseMatrix& matrix, const NVector& x)
{
    NVector product(matrix.size()), striped(matrix.size());
    matrix.getMatrixTimesVector(x, product);
    const double dot = stripes.multiply(matrix, x, striped);
    if (!znTest::sameNumbers(striped, product)) return testing::AssertionFailure() << "another product";
    if (!znTest::sameNumber(dot, x.dot(product))) return testing::AssertionFailure() << "another sum";
    return testing::AssertionSuccess();
}

} // namespace

TEST(RowStripes, MultiplyToTheBitsOfTheMatrix)
{
    znTest::Random random(8);
    RowStripes stripes;
    for (int n = 0; n < 150; n += 1 + n / 20) {
        SparseMatrix matrix(n);
        // Rows of all lengths: long ones, empty ones, some with zeros of both signs alone.
        for (int i = 0; i < n; ++i)
            for (int k = random.oneIn(9) ? n : random.below(8); k > 0; --k)
                matrix.addToElement(i, random.below(n),
                                    i % 5 == 0 ? (random.oneIn(2) ? 0.0 : -0.0) : random.real(-1, 1));
        EXPECT_FALSE(RowStripes().isCopyOf(matrix));
        stripes.copy(matrix);
        EXPECT_TRUE(stripes.isCopyOf(matrix));
        EXPECT_TRUE(haveSameBits(stripes, matrix, znTest::randomVector(n, random))) << n;
    }

    SparseMatrix matrix(5), transposed;
    stripes.copy(matrix);
    matrix = SparseMatrix(5);
    EXPECT_FALSE(stripes.isCopyOf(matrix)) << "the same entries, though assigned";
    stripes.copy(matrix);
    SparseMatrix(5).transpose(matrix);
    EXPECT_FALSE(stripes.isCopyOf(matrix));
}

TEST(RowStripes, ReachColumnsFarFromTheDiagonal)
{
    const int n = 70001;
    znTest::Random random(9);
    SparseMatrix matrix(n);
    for (int i = 0; i < n; ++i) {
        matrix.addToElement(i, i, random.real(1, 2));
        if (i % 3 == 0) matrix.addToElement(i, n - 1 - i, random.real(-1, 1));
        // As far as 16 bits reach, and one further.
        for (const int offset : {-32769, -32768, 32767, 32768})
            if (i % 257 == offset % 5 + 5 && i + offset >= 0 && i + offset < n)
                matrix.addToElement(i, i + offset, random.real(-1, 1));
    }
    RowStripes stripes;
    stripes.copy(matrix);
    EXPECT_TRUE(haveSameBits(stripes, matrix, znTest::randomVector(n, random)));
}
