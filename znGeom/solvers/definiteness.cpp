// What kind of matrix it is.
#include <cmath>

#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom {

bool SparseMatrix::isSymmetric() const
{
    for (int i = 0; i < size(); ++i)
        for (const SparseElement& element : m_rows[i])
            if (element.index != i && !(1e-6 > std::fabs(element.value - getElement(element.index, i)))) return false;
    return true;
}

bool SparseMatrix::isMMatrix() const
{
    bool isAnySumPositive = false;
    for (int i = 0; i < size(); ++i) {
        double sum = 0.0;
        for (const SparseElement& element : m_rows[i]) {
            if (element.index == i ? element.value <= 0 : element.value > 0) return false;
            sum += element.value;
        }
        if (sum < 0) return false;
        isAnySumPositive |= sum > 0;
    }
    return isAnySumPositive;
}

bool SparseMatrix::isPositiveDefinite() const
{
    SparseMatrix factor;
    return choleskyFactorization(factor);
}

bool SparseMatrix::choleskyFactorization(SparseMatrix& L) const
{
    L.setToZero(size());
    for (int k = 0; k < size(); ++k) {
        for (int i = k; i < size(); ++i) {
            // Rows of L are full up to column k, so that entry j stands at place j.
            const SparseElement *pivotRow = L.m_rows[k].data(), *row = L.m_rows[i].data();
            double x = getElement(k, i);
            for (int j = k - 1; j >= 0; --j) x -= pivotRow[j].value * row[j].value;
            if (i == k && x <= 0) return false;
            L.m_rows[i].append({k, i == k ? std::sqrt(x) : x / pivotRow[k].value});
        }
    }
    return true;
}

} // namespace znGeom
