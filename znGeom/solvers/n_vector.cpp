#include "znGeom/solvers/n_vector.h"

#include <cmath>
#include <ostream>

namespace znGeom {

double NVector::dot(const NVector& v) const
{
    const double *a = data(), *b = v.data();
    double sum = 0.0;
    for (int i = size() - 1; i >= 0; --i) sum += a[i] * b[i];
    return sum;
}

double NVector::infinityNorm() const
{
    double largest = 0.0;
    for (const double value : m_values) {
        const double magnitude = std::fabs(value);
        if (magnitude > largest) largest = magnitude;
    }
    return largest;
}

void NVector::setToVectorPlusScalarTimesVector(const NVector& a, double s, const NVector& b)
{
    double* const out = data();
    const double *first = a.data(), *second = b.data();
    for (int i = size() - 1; i >= 0; --i) out[i] = first[i] + s * second[i];
}

std::ostream& operator<<(std::ostream& stream, const NVector& v)
{
    stream << "(";
    for (int i = 0; i < v.size(); ++i) stream << v[i] << " ";
    return stream << ")";
}

} // namespace znGeom
