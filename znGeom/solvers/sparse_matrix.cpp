#include "znGeom/solvers/sparse_matrix.h"

#include <algorithm>

#include "znGeom/solvers/internal/row_product.h"

namespace znGeom {

using internal::rowTimesVector;

namespace {

/// The place of column j in a row, or null.
template <typename Row>
auto findColumn(Row& row, int j) -> decltype(row.data())
{
    for (auto* element = row.end(); element != row.begin();)
        if ((--element)->index == j) return element;
    return nullptr;
}

} // namespace

SparseMatrix& SparseMatrix::operator=(const SparseMatrix& other)
{
    if (&other != this) copy(other);
    return *this;
}

void SparseMatrix::copy(const SparseMatrix& other)
{
    setToZero(other.size());
    for (int i = 0; i < size(); ++i) m_rows[i] = other.m_rows[i];
}

void SparseMatrix::setToZero(int n)
{
    ++m_revision;
    m_rows.clear();
    m_rows.setSize(std::max(n, 0));
}

int SparseMatrix::nnz() const
{
    int count = 0;
    for (const auto& row : m_rows) count += row.size();
    return count;
}

void SparseMatrix::addToElement(int i, int j, double v)
{
    ++m_revision;
    zn::vector<SparseElement>& row = m_rows[i];
    if (SparseElement* element = findColumn(row, j)) {
        element->value += v;
    } else {
        if (row.empty()) row.reserve(8); // most rows of a mesh fit
        row.append({j, v});
    }
}

double SparseMatrix::getElement(int i, int j) const
{
    double value = 0.0;
    getElement(i, j, value);
    return value;
}

bool SparseMatrix::getElement(int i, int j, double& v) const
{
    const SparseElement* element = findColumn(m_rows[i], j);
    if (element) v = element->value;
    return element != nullptr;
}

void SparseMatrix::transpose(SparseMatrix& out) const
{
    out.setToZero(size());
    for (int i = 0; i < size(); ++i) {
        for (const SparseElement& element : m_rows[i]) {
            // If there is an entry of column i already, it is the last.
            zn::vector<SparseElement>& row = out.m_rows[element.index];
            if (!row.empty() && row.back().index == i)
                row.back().value += element.value;
            else
                row.append({i, element.value});
        }
    }
}

void SparseMatrix::getUpperTriangular(SparseMatrix& out) const
{
    ++out.m_revision;
    for (int i = 0; i < size(); ++i)
        for (const SparseElement& element : m_rows[i])
            if (element.index >= i) out.m_rows[i].append(element);
}

void SparseMatrix::getMatrixTimesVector(const NVector& x, NVector& out) const
{
    for (int i = 0; i < size(); ++i) out[i] = rowTimesVector(m_rows[i], x.data());
}

void SparseMatrix::getVectorMinusMatrixTimesVector(const NVector& b, const NVector& x, NVector& out) const
{
    for (int i = 0; i < size(); ++i) out[i] = b[i] - rowTimesVector(m_rows[i], x.data());
}

double SparseMatrix::vectorDotMatrixTimesVector(const NVector& u, const NVector& v) const
{
    double sum = 0.0;
    for (int i = 0; i < size(); ++i) sum += u[i] * rowTimesVector(m_rows[i], v.data());
    return sum;
}

} // namespace znGeom
