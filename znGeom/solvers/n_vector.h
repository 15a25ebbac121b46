/// `NVector`: a dense vector of numbers.
#pragma once

#include <algorithm>
#include <iosfwd>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// A vector of fixed length; only an assignment changes the length. Indices are not checked. Where a function takes
/// other vectors, they have at least the length of this one. All functions are linear.
class ZNGEOM_API NVector
{
public:
    /// Zeros; no elements at all when `n` is 0 or less.
    explicit NVector(int n) : m_values(std::max(n, 0), 0.0) {}

    int size() const { return m_values.size(); }
    double& operator[](int index) { return m_values[index]; }
    double operator[](int index) const { return m_values[index]; }

    /// The elements side by side; may be null when there are none.
    double* data() { return m_values.data(); }
    const double* data() const { return m_values.data(); }

    /// The sum of products, from the highest index down; 0 for an empty vector.
    double dot(const NVector& v) const;
    /// The largest absolute value; 0 for an empty vector. A NaN counts for nothing.
    double infinityNorm() const;

    /// Makes this a + s b. This vector may be one of the two, or both.
    void setToVectorPlusScalarTimesVector(const NVector& a, double s, const NVector& b);

private:
    zn::vector<double> m_values;
};

/// Writes "(1 2 )": each element as the stream formats a `double`, and a blank after it.
ZNGEOM_API std::ostream& operator<<(std::ostream& stream, const NVector& v);

} // namespace znGeom
