/// `SparseMatrix`: a square matrix held as rows of the entries that were put in.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/text/c_string.h"
#include "znGeom/solvers/n_vector.h"

namespace znGeom {

/// An entry of a row.
struct SparseElement
{
    std::int32_t index = -1; ///< the column
    double value = 0.0;
};

/// A square matrix of which most entries are zero and not stored.
///
/// Made for being put together term by term: a row keeps its entries in the order in which their columns first came,
/// and is searched from its last entry back, where the columns that came last are found at once. That suits rows of a
/// handful of entries, such as those of a mesh. A column is at most once in a row. A zero that is put in is stored like
/// any other value. Row and column indices are not checked, and no result may be the matrix or vector that it is
/// computed from. Copies are deep.
class ZNGEOM_API SparseMatrix
{
public:
    SparseMatrix() = default;
    /// `n` empty rows; none when `n` is 0 or less.
    explicit SparseMatrix(int n) { setToZero(n); }
    SparseMatrix(const SparseMatrix& other) { copy(other); }
    SparseMatrix& operator=(const SparseMatrix& other);

    /// Drops all entries and changes the size.
    void setToZero(int n);

    /// The number of rows, which is that of the columns.
    int size() const { return m_rows.size(); }
    /// The number of stored entries, zeros among them.
    int nnz() const;
    /// The entries of a row in stored order.
    const zn::vector<SparseElement>& row(int i) const { return m_rows[i]; }

    /// Adds to the entry in row i and column j, which is appended to the row when it isn't there. Linear in the row.
    void addToElement(int i, int j, double v);
    /// The entry in row i and column j, 0 when none is stored. Linear in the row.
    double getElement(int i, int j) const;
    /// Fetches a stored entry. \return false, with `v` unchanged, when none is stored there
    bool getElement(int i, int j, double& v) const;

    /// Whether each entry differs by less than 1e-6, whatever its size, from the one across the diagonal, an entry that
    /// isn't stored counting as 0. True without rows. Linear in entries, times the length of a row.
    bool isSymmetric() const;
    /// Whether `choleskyFactorization` succeeds.
    bool isPositiveDefinite() const;
    /// Whether rows add up as in an M-matrix, for which `IncompleteCholeskyPreconditioner` is safe: stored diagonal
    /// entries are above 0 and all others are not, no row has a sum below 0, and one at least has a sum above 0.
    ///
    /// Sums are taken in stored order and compared without a tolerance. Rows without entries are passed over, and a
    /// diagonal entry that isn't stored is not missed. False without rows. Linear in entries.
    bool isMMatrix() const;

    /// Factorises a symmetric matrix into L and its transpose, for small matrices: cubic in rows, whatever is stored.
    ///
    /// \param L  replaced by the factor, with every entry of its lower triangle stored. After a failure it has the
    ///           columns that were done before
    /// \return whether the matrix is positive definite: false at the first pivot of 0 or less. True without rows
    ///
    /// Only the entries on and above the diagonal are read.
    bool choleskyFactorization(SparseMatrix& L) const;

    /// Replaces `out` by the transpose, whose entries are stored in order of their columns. Linear in entries.
    void transpose(SparseMatrix& out) const;
    /// Appends the entries on and above the diagonal, in stored order, to the rows of `out`, which has as many rows and
    /// is not cleared. Linear in entries.
    void getUpperTriangular(SparseMatrix& out) const;

    /// out = A x, over as many elements as there are rows. Each row is summed from 0 in stored order; linear in
    /// entries.
    void getMatrixTimesVector(const NVector& x, NVector& out) const;
    /// out = b - A x, rows summed in the same way.
    void getVectorMinusMatrixTimesVector(const NVector& b, const NVector& x, NVector& out) const;
    /// u A v, rows summed in the same way, from the first row to the last.
    double vectorDotMatrixTimesVector(const NVector& u, const NVector& v) const;

    /// Writes how many rows have which length to the standard output, all in one line that is not ended:
    /// "  total rows: 3  length 1: 2 rows  length 3: 1 rows".
    void dumpRowLengths() const;

    /// All entries, zeros too, with ten decimals, as a nested list: "{\n{1.0000000000,0.0000000000},\n{...}\n}".
    znString::CString toMmaString() const;

    /// Goes up with every call that can change the matrix, for those who keep something derived from it.
    std::int64_t revision() const { return m_revision; }

private:
    friend class IncompleteCholeskyPreconditioner; // works on the values of rows in place

    void copy(const SparseMatrix& other);

    zn::vector<zn::vector<SparseElement>> m_rows;
    std::int64_t m_revision = 0;
};

/// Writes "SparseMatrix{", for each row the end of a line, which flushes, and all its entries with ten decimals, zeros
/// too, and "\n}". Two blanks stand before an entry, or one before an entry below 0.
ZNGEOM_API std::ostream& operator<<(std::ostream& stream, const SparseMatrix& matrix);

} // namespace znGeom
