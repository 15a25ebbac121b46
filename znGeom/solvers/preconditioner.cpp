#include "znGeom/solvers/preconditioner.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace znGeom {

namespace {

using Row = zn::vector<SparseElement>;

/// Reads a row whose columns ascend, column by column.
class RowReader
{
public:
    explicit RowReader(const Row& row) : m_next(row.begin()), m_end(row.end()) {}

    /// The next column that is stored; the largest number behind the last.
    int column() const { return m_next == m_end ? std::numeric_limits<int>::max() : m_next->index; }

    /// The entry of a column, 0 when it isn't stored, and past it. No column in between may be left out.
    double take(int column)
    {
        double value = 0.0;
        for (; m_next != m_end && m_next->index == column; ++m_next) value = m_next->value;
        return value;
    }

private:
    const SparseElement *m_next, *m_end;
};

/// The part of a substitution that belongs to row i of a triangular factor.
void substitute(const Row& row, int i, double* z)
{
    double diagonal = 0.0, rest = z[i];
    for (const SparseElement& element : row) {
        if (element.index == i)
            diagonal = element.value;
        else
            rest -= z[element.index] * element.value;
    }
    z[i] = rest / diagonal;
}

} // namespace

Preconditioner::~Preconditioner() = default;

DiagonalPreconditioner::DiagonalPreconditioner(const SparseMatrix& A) : m_inverse(A.size())
{
    for (int i = 0; i < A.size(); ++i) m_inverse[i] = 1.0 / A.getElement(i, i);
}

void DiagonalPreconditioner::applyInverse(const NVector& r, NVector& z) const
{
    const double *residual = r.data(), *inverse = m_inverse.data();
    double* const out = z.data();
    for (int i = 0; i < r.size(); ++i) out[i] = residual[i] * inverse[i];
}

IncompleteCholeskyPreconditioner::IncompleteCholeskyPreconditioner(const SparseMatrix& A)
    : m_lower(A.size()), m_upper(A.size())
{
    A.getUpperTriangular(m_upper);
    for (int i = 0; i < A.size(); ++i) {
        eliminate(i);
        scale(i);
    }
}

/// Takes the rows above off row i of U. Those that have an entry in column i or j are in rows i and j of L by now: what
/// the others would take off is 0.
void IncompleteCholeskyPreconditioner::eliminate(int i)
{
    for (SparseElement& element : m_upper.m_rows[i]) {
        RowReader pivots(m_lower.row(i)), column(m_lower.row(element.index));
        // An entry only one of which is stored counts as well: 0 times infinity is not 0.
        for (int k; element.value != 0 && (k = std::min(pivots.column(), column.column())) < i;) {
            const double pivot = pivots.take(k);
            element.value -= pivot * column.take(k);
        }
    }
}

/// Divides row i of U by the root of its pivot, and appends it to L as a column.
void IncompleteCholeskyPreconditioner::scale(int i)
{
    Row& row = m_upper.m_rows[i];
    const auto isDiagonal = [i](const SparseElement& element) { return element.index == i; };
    SparseElement* const pivot = std::find_if(row.begin(), row.end(), isDiagonal);
    const double root = pivot == row.end() ? 0.0 : pivot->value = std::sqrt(pivot->value);
    for (SparseElement& element : row) {
        if (!isDiagonal(element)) element.value /= root;
        m_lower.m_rows[element.index].append({i, element.value});
    }
}

void IncompleteCholeskyPreconditioner::applyInverse(const NVector& r, NVector& z) const
{
    const int n = m_lower.size();
    for (int i = 0; i < n; ++i) {
        z[i] = r[i];
        substitute(m_lower.row(i), i, z.data());
    }
    for (int i = n - 1; i >= 0; --i) substitute(m_upper.row(i), i, z.data());
}

} // namespace znGeom
