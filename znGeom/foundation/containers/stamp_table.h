/// `zn::StampTable`: a visited set that is emptied by counting up.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "znGeom/foundation/machine/prefetch.h"

namespace zn {

/// Which of `size` indices were marked since the last `next`. A new query takes a new stamp instead of clearing; the
/// array is cleared when the stamps run out.
class StampTable
{
public:
    explicit StampTable(int size)
        : m_size(static_cast<size_t>(size)), m_stamps(std::make_unique<std::uint32_t[]>(m_size))
    {}

    /// Empties the set: returns a stamp with which nothing is marked yet.
    std::uint32_t next()
    {
        if (++m_stamp > 0xFFFFFFFEu) {
            std::fill_n(m_stamps.get(), m_size, 0u);
            m_stamp = 1;
        }
        return m_stamp;
    }
    /// Marks an index with the current stamp; returns whether it was unmarked. The caller passes the stamp back in, so
    /// that a hot loop can keep it in a register.
    bool mark(int index, std::uint32_t stamp)
    {
        return std::exchange(m_stamps[static_cast<size_t>(index)], stamp) != stamp;
    }
    bool isMarked(int index) const { return m_stamps[static_cast<size_t>(index)] == m_stamp; }

    void prefetch(int index) const { znUtil::prefetch(&m_stamps[static_cast<size_t>(index)]); }

private:
    size_t m_size;
    std::unique_ptr<std::uint32_t[]> m_stamps;
    std::uint32_t m_stamp = 0;
};

} // namespace zn
