/// A second form of a sparse matrix, in which it is multiplied in half the time.
#pragma once

#include <cstdint>
#include <memory>

#include "znGeom/solvers/n_vector.h"
#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom::internal {

struct RowStripe
{
    static constexpr int numLanes = 4;

    int rows[numLanes];
    int length;  ///< of the longest row, zeros left out
    bool isNear; ///< whether all columns are so close to the first of the rows that 16 bits hold the difference
};

/// Rows in stripes of four, side by side: the sums of a stripe do not wait for one another, and one loop over its
/// longest row serves all. Rows of similar length are put together, within windows of neighbouring rows, which are done
/// from the last row to the first; the few rows that are left at the beginning are taken from the matrix. Columns near
/// the diagonal are kept as 16-bit offsets. After Kreutzer, Hager, Wellein, Fehske, Bishop, "A Unified Sparse Matrix
/// Data Format for Efficient General Sparse Matrix-Vector Multiplication on Modern Processors" (2014).
///
/// Each row is summed in the order of the matrix. Stored zeros are left out and shorter rows filled up with zeros,
/// neither of which changes a bit of a product with a vector of finite numbers.
class RowStripes
{
public:
    /// Linear in entries. Takes at most 12 bytes for each, but four times that for a row far longer than all others.
    void copy(const SparseMatrix& matrix);

    /// Whether `matrix`, which must be the one that was copied last, is unchanged. False before any copy.
    bool isCopyOf(const SparseMatrix& matrix) const { return matrix.revision() == m_revision; }

    /// Writes `matrix` x, for the matrix of which this is a copy.
    ///
    /// \return `x.dot(out)` to the last bit. If it isn't finite, then `x` may not be, and both results are worthless
    double multiply(const SparseMatrix& matrix, const NVector& x, NVector& out) const;

private:
    static constexpr int numLanes = RowStripe::numLanes, windowSize = 64;
    static_assert(windowSize % numLanes == 0);

    static int beginOfWindow(int end, int n);
    void divide(const SparseMatrix& matrix);
    void fill(const SparseMatrix& matrix);

    zn::vector<RowStripe> m_stripes;
    // Entry k of the rows of a stripe, then entry k + 1; stripe by stripe. The column of a value is in the array of
    // near ones, relative to the first row of its stripe, or in the array of far ones.
    std::unique_ptr<double[]> m_values;
    std::unique_ptr<std::int16_t[]> m_near;
    std::unique_ptr<std::int32_t[]> m_far;
    std::int64_t m_revision = -1;
};

} // namespace znGeom::internal
