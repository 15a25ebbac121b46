/// The rows of a sparse matrix, one behind the other.
#pragma once

#include <span>

#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom::internal {

/// A matrix that is put together row by row and not changed afterwards. Half the memory of a `SparseMatrix`, without a
/// block of its own for each row.
class FlatRows
{
public:
    int size() const { return m_starts.size() - 1; }
    std::span<const SparseElement> row(int i) const
    {
        return {m_elements.begin() + m_starts[i], m_elements.begin() + m_starts[i + 1]};
    }
    /// All entries so far.
    zn::vector<SparseElement>& elements() { return m_elements; }
    /// Ends a row: what was appended since the last one belongs to it.
    void endRow() { m_starts.append(m_elements.size()); }

private:
    zn::vector<int> m_starts = zn::vector<int>(1, 0);
    zn::vector<SparseElement> m_elements;
};

} // namespace znGeom::internal
