/// A second form of a sparse matrix, in which it is multiplied in half the time.
#pragma once

#include <cstdint>
#include <memory>

#include "znGeom/solvers/n_vector.h"
#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom::internal {

/// Rows in stripes of four, side by side: the sums of a stripe do not wait for one another, and one loop over its
/// longest row serves all. Each row is summed in the order of the matrix. Stored zeros are left out and shorter rows
/// filled up with zeros, neither of which changes a bit of a product with a vector of finite numbers. Stripes begin
/// with the last row; the few rows that are left at the beginning are taken from the matrix. After Monakov,
/// Lokhmotov, Avetisyan, "Automatically Tuning Sparse Matrix-Vector Multiplication for GPU Architectures" (2010).
class RowStripes
{
public:
    /// Linear in entries, as long as rows beside one another are about equally long; four times that at worst.
    void copy(const SparseMatrix& matrix);

    /// Whether `matrix`, which must be the one that was copied last, is unchanged. False before any copy.
    bool isCopyOf(const SparseMatrix& matrix) const { return matrix.revision() == m_revision; }

    /// Writes `matrix` x, for the matrix of which this is a copy.
    ///
    /// \return `x.dot(out)` to the last bit. If it isn't finite, then `x` may not be, and both results are worthless
    double multiply(const SparseMatrix& matrix, const NVector& x, NVector& out) const;

private:
    zn::vector<int> m_lengths; ///< of the longest row of each stripe
    // Entry k of the four rows of a stripe, then entry k + 1; stripe by stripe.
    std::unique_ptr<double[]> m_values;
    std::unique_ptr<std::int32_t[]> m_columns;
    std::int64_t m_revision = -1;
};

} // namespace znGeom::internal
