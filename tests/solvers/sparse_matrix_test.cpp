#include "znGeom/solvers/sparse_matrix.h"

#include <limits>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/solvers/systems.h"

using znGeom::NVector;
using znGeom::SparseMatrix;
using znTest::vectorOf;

namespace {

/// Zeros are not stored.
SparseMatrix matrixOf(std::initializer_list<std::initializer_list<double>> rows)
{
    SparseMatrix matrix(static_cast<int>(rows.size()));
    for (int i = 0; i < matrix.size(); ++i)
        for (int j = 0; j < matrix.size(); ++j)
            if (const double value = rows.begin()[i].begin()[j]; value != 0) matrix.addToElement(i, j, value);
    return matrix;
}

/// Each edge of a ring of `n` joins neighbours with weight 1: all rows add up to 0.
SparseMatrix closedChain(int n)
{
    SparseMatrix matrix(n);
    for (int i = 0; i < n; ++i)
        for (const int j : {(i + 1) % n, (i + n - 1) % n}) matrix.addToElement(i, j, -1), matrix.addToElement(i, i, 1);
    return matrix;
}

template <class Value>
std::string asText(const Value& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

} // namespace

TEST(NVector, SumsFromTheTopAndMayBeItsOwnArgument)
{
    // From the bottom these sums would be 1 and 0.
    EXPECT_EQ(vectorOf({1, 1e16, -1e16}).dot(vectorOf({1, 1, 1})), 1);
    EXPECT_EQ(vectorOf({1e16, -1e16, 1}).dot(vectorOf({1, 1, 1})), 0);
    EXPECT_EQ(vectorOf({3, -4}).infinityNorm(), 4);

    NVector v = vectorOf({1, 2, 3}), w = vectorOf({10, 20, 30});
    v.setToVectorPlusScalarTimesVector(v, 2, v);
    EXPECT_EQ(asText(v), "(3 6 9 )");
    v.setToVectorPlusScalarTimesVector(w, -1, v);
    EXPECT_EQ(asText(v), "(7 14 21 )");
    w = v;
    v = vectorOf({0.5});
    EXPECT_EQ(asText(v) + asText(w), "(0.5 )(7 14 21 )");

    for (const int n : {0, -3}) {
        const NVector empty(n);
        EXPECT_EQ(empty.size(), 0);
        EXPECT_EQ(empty.dot(w), 0);
        EXPECT_EQ(empty.infinityNorm(), 0);
        EXPECT_EQ(asText(empty), "()");
    }
}

TEST(SparseMatrix, AccumulatesInTheOrderInWhichColumnsCome)
{
    SparseMatrix matrix(3);
    matrix.addToElement(1, 2, 4);
    matrix.addToElement(1, 0, 0.0);
    matrix.addToElement(1, 2, -1);
    EXPECT_EQ(matrix.nnz(), 2);
    ASSERT_EQ(matrix.row(1).size(), 2);
    EXPECT_EQ(matrix.row(1)[0].index, 2);
    EXPECT_EQ(matrix.row(1)[0].value, 3);

    double value = 7;
    EXPECT_FALSE(matrix.getElement(1, 1, value));
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(matrix.getElement(1, 0, value));
    EXPECT_EQ(value, 0);

    SparseMatrix copied(matrix), assigned(8);
    assigned = matrix;
    matrix.addToElement(1, 2, 1);
    EXPECT_EQ(copied.getElement(1, 2) + assigned.getElement(1, 2), 6) << "copies are deep";
    EXPECT_EQ(assigned.size(), 3);
    matrix.setToZero(-1);
    EXPECT_EQ(matrix.size() + matrix.nnz(), 0);
}

TEST(SparseMatrix, MultipliesAndTransposes)
{
    znTest::Random random(1);
    for (int n : {1, 2, 9, 30}) {
        SparseMatrix matrix(n), transposed(2), upper(n);
        for (int k = 0; k < 4 * n; ++k) matrix.addToElement(random.below(n), random.below(n), random.real(-1, 1));
        matrix.transpose(transposed);
        matrix.getUpperTriangular(upper);
        const NVector x = znTest::randomVector(n, random), b = znTest::randomVector(n, random);
        NVector product(n), rest(n);
        matrix.getMatrixTimesVector(x, product);
        matrix.getVectorMinusMatrixTimesVector(b, x, rest);
        for (int i = 0; i < n; ++i) {
            double sum = 0;
            for (int j = 0; j < n; ++j) {
                sum += matrix.getElement(i, j) * x[j];
                EXPECT_EQ(transposed.getElement(j, i), matrix.getElement(i, j));
                EXPECT_EQ(upper.getElement(i, j), j < i ? 0 : matrix.getElement(i, j));
            }
            EXPECT_NEAR(product[i], sum, 1e-14);
            EXPECT_EQ(rest[i], b[i] - product[i]);
        }
        EXPECT_NEAR(matrix.vectorDotMatrixTimesVector(b, x), b.dot(product), 1e-13);
        EXPECT_EQ(transposed.nnz(), matrix.nnz());
        EXPECT_EQ(matrix.isSymmetric(), n == 1);
        EXPECT_TRUE(znTest::randomLaplacian(n, 1, random).isSymmetric());
    }

    // What is there stays, and counts twice.
    SparseMatrix upper = matrixOf({{1, 2}, {3, 4}}), twice;
    matrixOf({{1, 2}, {3, 4}}).getUpperTriangular(upper);
    EXPECT_EQ(upper.nnz(), 7);
    upper.transpose(twice);
    EXPECT_EQ(twice.nnz(), 4);
    EXPECT_EQ(twice.getElement(1, 0), 4);

    // In stored order the large numbers cancel out first.
    SparseMatrix ordered(3);
    for (const int j : {2, 0, 1}) ordered.addToElement(0, j, 1);
    NVector sums(3);
    ordered.getMatrixTimesVector(vectorOf({-1e16, 1, 1e16}), sums);
    EXPECT_EQ(sums[0], 1);
}

TEST(SparseMatrix, KnowsItsKind)
{
    for (const int n : {0, -2}) {
        SparseMatrix empty(n), factor(4);
        EXPECT_TRUE(empty.isSymmetric());
        EXPECT_FALSE(empty.isMMatrix());
        EXPECT_TRUE(empty.choleskyFactorization(factor));
        EXPECT_EQ(factor.size(), 0);
    }

    // The bound on asymmetry is absolute, and strict.
    EXPECT_TRUE(matrixOf({{1, 1e-7}, {0, 1}}).isSymmetric());
    EXPECT_FALSE(matrixOf({{1, 1e-6}, {0, 1}}).isSymmetric());
    EXPECT_FALSE(matrixOf({{1, 0}, {std::nan(""), 1}}).isSymmetric());
    EXPECT_FALSE(matrixOf({{1, 1e9}, {1e9 + 1e-5, 1}}).isSymmetric());

    SparseMatrix chain = closedChain(5);
    EXPECT_FALSE(chain.isMMatrix()) << "no row has a sum above 0";
    chain.addToElement(3, 3, 1e-15);
    EXPECT_TRUE(chain.isMMatrix());
    chain.addToElement(2, 0, 0.5);
    EXPECT_FALSE(chain.isMMatrix()) << "above 0 beside the diagonal";
    EXPECT_FALSE(matrixOf({{1, -2}, {0, 5}}).isMMatrix()) << "a sum below 0";
    EXPECT_FALSE(matrixOf({{-1, 0}, {0, 5}}).isMMatrix());
    SparseMatrix gaps(3);
    gaps.addToElement(1, 1, 2);
    gaps.addToElement(2, 0, 0.0);
    EXPECT_TRUE(gaps.isMMatrix()) << "a row without entries, and one without a diagonal entry";
    gaps.addToElement(2, 2, 0.0);
    EXPECT_FALSE(gaps.isMMatrix()) << "a stored diagonal entry of 0";
}

TEST(SparseMatrix, FactorisesWhatIsPositiveDefinite)
{
    znTest::Random random(2);
    for (int n : {1, 2, 12}) {
        SparseMatrix matrix = znTest::randomLaplacian(n, 0.1, random), factor, factorTransposed;
        ASSERT_TRUE(matrix.choleskyFactorization(factor));
        EXPECT_EQ(factor.nnz(), n * (n + 1) / 2) << "zeros are stored";
        factor.transpose(factorTransposed);
        for (int j = 0; j < n; ++j) {
            NVector column(n), product(n);
            for (int i = 0; i < n; ++i) column[i] = factorTransposed.getElement(i, j);
            factor.getMatrixTimesVector(column, product);
            for (int i = 0; i < n; ++i) EXPECT_NEAR(product[i], matrix.getElement(i, j), 1e-13);
        }
        matrix.addToElement(n / 2, n / 2, -100);
        EXPECT_FALSE(matrix.isPositiveDefinite());
    }

    // Below the diagonal nothing is read; a failure leaves the columns before.
    SparseMatrix factor;
    EXPECT_TRUE(matrixOf({{4, 2}, {0, 10}}).choleskyFactorization(factor));
    EXPECT_EQ(factor.getElement(1, 0), 1);
    EXPECT_EQ(factor.getElement(1, 1), 3);
    EXPECT_FALSE(matrixOf({{4, 2}, {2, 1}}).choleskyFactorization(factor)) << "a pivot of 0";
    EXPECT_EQ(factor.nnz(), 2);
}

TEST(SparseMatrix, WritesEveryEntry)
{
    EXPECT_EQ(asText(matrixOf({{1, 0}, {0, 1}})), "SparseMatrix{\n  1.0000000000  0.0000000000"
                                                  "\n  0.0000000000  1.0000000000\n}");
    SparseMatrix matrix = matrixOf({{-1, 2.00000000005}, {-1e-12, 1e20}});
    EXPECT_EQ(asText(matrix), "SparseMatrix{\n -1.0000000000  2.0000000001"
                              "\n -0.0000000000  100000000000000000000.0000000000\n}");
    EXPECT_STREQ(matrix.toMmaString().asChar(), "{\n{-1.0000000000,2.0000000001},\n"
                                                "{-0.0000000000,100000000000000000000.0000000000}\n}");
    EXPECT_EQ(asText(SparseMatrix()), "SparseMatrix{\n}");
    EXPECT_STREQ(SparseMatrix().toMmaString().asChar(), "{\n}");

    // A zero with a sign isn't below zero; the longest number has 309 digits.
    SparseMatrix extremes(1);
    extremes.addToElement(0, 0, -0.0);
    EXPECT_EQ(asText(extremes), "SparseMatrix{\n  -0.0000000000\n}");
    extremes.addToElement(0, 0, -std::numeric_limits<double>::max());
    EXPECT_EQ(asText(extremes).size(), 13 + 2 + 1 + 309 + 11 + 2U);
    EXPECT_EQ(std::stod(asText(extremes).substr(14)), -std::numeric_limits<double>::max());

    SparseMatrix ragged(4);
    for (int j = 0; j < 3; ++j) ragged.addToElement(2, j, 1), ragged.addToElement(3, j, 1);
    ragged.addToElement(1, 1, 0);
    testing::internal::CaptureStdout();
    ragged.dumpRowLengths();
    SparseMatrix().dumpRowLengths();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "  total rows: 4  length 0: 1 rows  length 1: 1 rows"
                                                      "  length 3: 2 rows  total rows: 0");
}
