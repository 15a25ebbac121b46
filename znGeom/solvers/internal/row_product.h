/// One row of a matrix times a vector.
#pragma once

#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom::internal {

/// Summed from 0 in stored order.
inline double rowTimesVector(const zn::vector<SparseElement>& row, const double* x)
{
    double sum = 0.0;
    for (const SparseElement& element : row) sum += element.value * x[element.index];
    return sum;
}

} // namespace znGeom::internal
