#include "znGeom/solvers/internal/row_stripes.h"

#include <algorithm>
#include <cstddef>

#include "znGeom/solvers/internal/row_product.h"

namespace znGeom::internal {

namespace {

using Row = zn::vector<SparseElement>;

constexpr int numLanes = 4;

int countNonZeros(const Row& row)
{
    int count = 0;
    for (const SparseElement& element : row) count += element.value != 0;
    return count;
}

/// Copies a row to every fourth place.
void spreadNonZeros(const Row& row, double* values, std::int32_t* columns)
{
    for (const SparseElement& element : row) {
        if (element.value == 0) continue;
        *values = element.value, values += numLanes;
        *columns = element.index, columns += numLanes;
    }
}

} // namespace

void RowStripes::copy(const SparseMatrix& matrix)
{
    m_revision = -1; // should memory run out on the way
    const int numStripes = matrix.size() / numLanes;
    const auto rowOf = [&](int stripe, int lane) -> const Row& {
        return matrix.row(matrix.size() - 1 - stripe * numLanes - lane);
    };

    m_lengths = zn::vector<int>(numStripes, 0);
    std::size_t size = 0;
    for (int stripe = 0; stripe < numStripes; ++stripe) {
        int& length = m_lengths[stripe];
        for (int lane = 0; lane < numLanes; ++lane) length = std::max(length, countNonZeros(rowOf(stripe, lane)));
        size += static_cast<std::size_t>(numLanes) * static_cast<std::size_t>(length);
    }

    m_values = std::make_unique<double[]>(size);
    m_columns = std::make_unique<std::int32_t[]>(size);
    double* values = m_values.get();
    std::int32_t* columns = m_columns.get();
    for (int stripe = 0; stripe < numStripes; ++stripe) {
        for (int lane = 0; lane < numLanes; ++lane) spreadNonZeros(rowOf(stripe, lane), values + lane, columns + lane);
        values += std::ptrdiff_t{numLanes} * m_lengths[stripe];
        columns += std::ptrdiff_t{numLanes} * m_lengths[stripe];
    }
    m_revision = matrix.revision();
}

double RowStripes::multiply(const SparseMatrix& matrix, const NVector& x, NVector& out) const
{
    const double *in = x.data(), *values = m_values.get();
    const std::int32_t* columns = m_columns.get();
    double product = 0.0;
    int row = matrix.size() - 1;
    for (const int length : m_lengths) {
        double sums[numLanes] = {};
        for (int k = 0; k < length; ++k, values += numLanes, columns += numLanes)
            for (int lane = 0; lane < numLanes; ++lane) sums[lane] += values[lane] * in[columns[lane]];
        for (int lane = 0; lane < numLanes; ++lane, --row) {
            out[row] = sums[lane];
            product += in[row] * sums[lane];
        }
    }
    for (; row >= 0; --row) {
        out[row] = rowTimesVector(matrix.row(row), in);
        product += in[row] * out[row];
    }
    return product;
}

} // namespace znGeom::internal
