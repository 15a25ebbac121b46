/// `znGeom::internal::GrowingArray`: elements whose number is not known beforehand.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "znGeom/foundation/mesh/array.h"

namespace znGeom::internal {

/// Grows in advance of a loop that then writes through a pointer. Growing takes address space: memory that was not
/// written to is not used, and where the system can move a block by its page table nothing is copied.
template <typename T>
class GrowingArray
{
public:
    /// At most so many elements, so that the numbers that they consist of can still be counted with an `int`.
    static constexpr std::int64_t limit = std::numeric_limits<int>::max() / static_cast<int>(sizeof(T) / 4) - 2;

    int size() { return static_cast<int>(m_end - begin()); }
    T* begin() { return m_elements.write(); }
    T* end() { return m_end; }

    /// Makes room for `count` more behind the end; false when they might be too many.
    bool reserve(std::int64_t count)
    {
        const int used = size();
        if (count > limit - used) return false;
        const std::int64_t room = m_elements.size();
        if (used + count > room) m_elements.resize(static_cast<int>(std::min(limit, room + room / 2 + count)));
        m_end = begin() + used;
        return true;
    }

    /// Moves the end within the room that was made.
    void setEnd(T* end) { m_end = end; }

    void clear()
    {
        m_elements.resize(0);
        m_end = nullptr;
    }

private:
    Array<T> m_elements;
    T* m_end = nullptr;
};

} // namespace znGeom::internal
