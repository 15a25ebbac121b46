#include "znGeom/solvers/internal/row_stripes.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>

#include "znGeom/solvers/internal/row_product.h"

namespace znGeom::internal {

namespace {

constexpr int numLanes = RowStripe::numLanes;

std::ptrdiff_t sizeOf(const RowStripe& stripe) { return std::ptrdiff_t{numLanes} * stripe.length; }

/// What is not zero in a row: how many entries, and between which columns.
struct Extent
{
    int count = 0;
    int first = std::numeric_limits<int>::max(), last = std::numeric_limits<int>::min();
};

Extent extentOf(const zn::vector<SparseElement>& row)
{
    Extent extent;
    for (const SparseElement& element : row) {
        if (element.value == 0) continue;
        ++extent.count;
        extent.first = std::min(extent.first, element.index);
        extent.last = std::max(extent.last, element.index);
    }
    return extent;
}

bool isNear(const Extent& extent, int row)
{
    using Limits = std::numeric_limits<std::int16_t>;
    return extent.count == 0 || (extent.first - row >= Limits::min() && extent.last - row <= Limits::max());
}

/// Writes a stripe, with its columns relative to `base`. \return the place behind its columns
template <typename Column>
Column* writeStripe(const SparseMatrix& matrix, const RowStripe& stripe, int base, double* values, Column* columns)
{
    for (int lane = 0; lane < numLanes; ++lane) {
        std::ptrdiff_t place = lane;
        for (const SparseElement& element : matrix.row(stripe.rows[lane])) {
            if (element.value == 0) continue;
            values[place] = element.value;
            columns[place] = static_cast<Column>(element.index - base);
            place += numLanes;
        }
    }
    return columns + sizeOf(stripe);
}

/// Sums the rows of a stripe, whose columns are relative to `x`. \return the place behind its columns
template <typename Column>
const Column* multiplyStripe(int length, const double* values, const Column* columns, const double* x, double* sums)
{
    double laneSums[numLanes] = {};
    for (int k = 0; k < length; ++k, values += numLanes, columns += numLanes)
        for (int lane = 0; lane < numLanes; ++lane) laneSums[lane] += values[lane] * x[columns[lane]];
    std::copy_n(laneSums, numLanes, sums);
    return columns;
}

} // namespace

/// Of the window that ends before row `end`.
int RowStripes::beginOfWindow(int end, int n) { return std::max(end - windowSize, n % numLanes); }

void RowStripes::copy(const SparseMatrix& matrix)
{
    m_revision = -1; // should memory run out on the way
    divide(matrix);
    fill(matrix);
    m_revision = matrix.revision();
}

void RowStripes::divide(const SparseMatrix& matrix)
{
    m_stripes.clear();
    const int n = matrix.size();
    for (int end = n, begin; end >= numLanes; end = begin) {
        begin = beginOfWindow(end, n);
        Extent extents[windowSize];
        std::int64_t byLength[windowSize]; // the length, then the place in the window
        for (int i = 0; i < end - begin; ++i) {
            extents[i] = extentOf(matrix.row(begin + i));
            byLength[i] = std::int64_t{extents[i].count} * windowSize + i;
        }
        std::sort(byLength, byLength + (end - begin), std::greater());
        for (int i = 0; i < end - begin; i += numLanes) {
            RowStripe stripe;
            stripe.length = static_cast<int>(byLength[i] / windowSize);
            stripe.isNear = true;
            for (int lane = 0; lane < numLanes; ++lane) {
                const int place = static_cast<int>(byLength[i + lane] % windowSize);
                stripe.rows[lane] = begin + place;
                stripe.isNear = stripe.isNear && isNear(extents[place], stripe.rows[0]);
            }
            m_stripes.append(stripe);
        }
    }
}

void RowStripes::fill(const SparseMatrix& matrix)
{
    std::ptrdiff_t numNear = 0, numFar = 0;
    for (const RowStripe& stripe : m_stripes) (stripe.isNear ? numNear : numFar) += sizeOf(stripe);
    m_values = std::make_unique<double[]>(static_cast<std::size_t>(numNear + numFar));
    m_near = std::make_unique<std::int16_t[]>(static_cast<std::size_t>(numNear));
    m_far = std::make_unique<std::int32_t[]>(static_cast<std::size_t>(numFar));

    double* values = m_values.get();
    std::int16_t* near = m_near.get();
    std::int32_t* far = m_far.get();
    for (const RowStripe& stripe : m_stripes) {
        if (stripe.isNear)
            near = writeStripe(matrix, stripe, stripe.rows[0], values, near);
        else
            far = writeStripe(matrix, stripe, 0, values, far);
        values += sizeOf(stripe);
    }
}

double RowStripes::multiply(const SparseMatrix& matrix, const NVector& x, NVector& out) const
{
    const double *in = x.data(), *values = m_values.get();
    const std::int16_t* near = m_near.get();
    const std::int32_t* far = m_far.get();
    const RowStripe* stripe = m_stripes.begin();
    double product = 0.0;
    int end = matrix.size();
    while (end >= numLanes) {
        const int begin = beginOfWindow(end, matrix.size());
        for (int left = end - begin; left > 0; left -= numLanes, values += sizeOf(*stripe++)) {
            double sums[numLanes];
            if (stripe->isNear)
                near = multiplyStripe(stripe->length, values, near, in + stripe->rows[0], sums);
            else
                far = multiplyStripe(stripe->length, values, far, in, sums);
            for (int lane = 0; lane < numLanes; ++lane) out[stripe->rows[lane]] = sums[lane];
        }
        for (; end > begin; --end) product += in[end - 1] * out[end - 1];
    }
    for (; end > 0; --end) {
        out[end - 1] = rowTimesVector(matrix.row(end - 1), in);
        product += in[end - 1] * out[end - 1];
    }
    return product;
}

} // namespace znGeom::internal
