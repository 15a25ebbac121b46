/// `znGeom::internal::Table`: values beside a half-edge mesh, by the numbers of its elements.
#pragma once

#include "znGeom/foundation/machine/internal/aligned_array.h"

namespace znGeom::internal {

/// One value for each number from 0 on; numbers among them are uninitialised.
template <typename T>
class Table
{
public:
    explicit Table(int size) : m_values(makeAlignedArray<T>(static_cast<size_t>(size))) {}

    T& operator[](int number) { return m_values[static_cast<size_t>(number)]; }
    const T& operator[](int number) const { return m_values[static_cast<size_t>(number)]; }
    T* begin() { return m_values.get(); }

private:
    AlignedArray<T> m_values;
};

} // namespace znGeom::internal
