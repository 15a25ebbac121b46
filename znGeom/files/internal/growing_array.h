/// `znGeom::internal::GrowingArray`: elements whose number is not known in advance.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "znGeom/foundation/mesh/array.h"

namespace znGeom::internal {

/// Grows in advance of a loop that then writes through a pointer. Growing takes address space: memory that has not been
/// written to is not used, and nothing is copied where the system can move a block by its page table.
template <typename T>
class GrowingArray
{
public:
    /// The largest number of elements; the numbers that they consist of can then still be counted with an `int`.
    static constexpr std::int64_t limit = std::numeric_limits<int>::max() / static_cast<int>(sizeof(T) / 4) - 2;

    int size() const { return m_size; }
    /// How many elements there is room for.
    int capacity() const { return m_elements.size(); }
    T* begin() { return m_elements.write(); }
    const T* begin() const { return m_elements.read(); }
    T* end() { return begin() + m_size; }

    /// Makes room for `count` more after the end; false when they might be too many.
    bool reserve(std::int64_t count)
    {
        if (count > limit - m_size) return false;
        const std::int64_t room = m_elements.size();
        if (m_size + count > room) m_elements.resize(static_cast<int>(std::min(limit, room + room / 2 + count)));
        return true;
    }

    /// Moves the end within the room that was made.
    void setEnd(const T* end) { m_size = static_cast<int>(end - begin()); }

    /// False when there would be too many.
    bool append(const T* elements, int count)
    {
        if (m_size + std::int64_t(count) > m_elements.size() && !reserve(count)) return false;
        std::copy_n(elements, count, end());
        m_size += count;
        return true;
    }

    /// Exactly the elements, in an array of their own; this one is empty then.
    Array<T> take()
    {
        m_elements.resize(m_size);
        m_size = 0;
        return std::move(m_elements);
    }

    void clear()
    {
        m_elements.resize(0);
        m_size = 0;
    }

private:
    Array<T> m_elements;
    int m_size = 0;
};

} // namespace znGeom::internal
