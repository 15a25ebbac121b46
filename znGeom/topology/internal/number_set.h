/// `znGeom::internal::NumberSet`: a set of element numbers that takes room by its members alone.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace znGeom::internal {

/// Numbers from 0 on, kept as pages of 64 bits in a hashed table: a few faces of a huge mesh take a few pages, and
/// neighbouring numbers share one. Inserting and asking take constant time.
class NumberSet
{
public:
    NumberSet() : m_slots(16, -1) {}

    int size() const { return m_size; }
    bool contains(int number) const
    {
        const int page = m_slots[slotOf(number >> 6)];
        return page >= 0 && (m_pages[static_cast<size_t>(page)].bits & bitOf(number)) != 0;
    }
    /// Whether the number was not there.
    bool insert(int number)
    {
        std::uint64_t& bits = pageFor(number >> 6).bits;
        if (bits & bitOf(number)) return false;
        bits |= bitOf(number);
        ++m_size;
        return true;
    }

    /// Puts the members in order, for the two below, until the next `insert`.
    void sort()
    {
        std::sort(m_pages.begin(), m_pages.end(), [](const Page& a, const Page& b) { return a.key < b.key; });
        int below = 0;
        for (Page& page : m_pages) {
            page.below = below;
            below += std::popcount(page.bits);
        }
        fillSlots(m_slots.size());
    }
    /// How many members are lower than a member.
    int rank(int member) const
    {
        const Page& page = m_pages[static_cast<size_t>(m_slots[slotOf(member >> 6)])];
        return page.below + std::popcount(page.bits & (bitOf(member) - 1));
    }
    /// Calls `visit` with each member, the lowest first.
    template <typename Visit>
    void forEach(const Visit& visit) const
    {
        for (const Page& page : m_pages)
            for (std::uint64_t bits = page.bits; bits != 0; bits &= bits - 1)
                visit(page.key * 64 + std::countr_zero(bits));
    }

private:
    struct Page
    {
        int key;
        int below; ///< how many members the pages before it have, once they are in order
        std::uint64_t bits;
    };

    static std::uint64_t bitOf(int number) { return std::uint64_t(1) << (number & 63); }

    /// The slot of a page, or the free one where it would go.
    size_t slotOf(int key) const
    {
        const size_t mask = m_slots.size() - 1;
        size_t slot = static_cast<size_t>(static_cast<std::uint64_t>(key) * 0x9E3779B97F4A7C15u >> 32) & mask;
        while (m_slots[slot] >= 0 && m_pages[static_cast<size_t>(m_slots[slot])].key != key) slot = (slot + 1) & mask;
        return slot;
    }

    Page& pageFor(int key)
    {
        const size_t slot = slotOf(key);
        if (m_slots[slot] >= 0) return m_pages[static_cast<size_t>(m_slots[slot])];
        m_slots[slot] = static_cast<int>(m_pages.size());
        m_pages.push_back({key, 0, 0});
        if (2 * m_pages.size() > m_slots.size()) fillSlots(2 * m_slots.size());
        return m_pages.back();
    }

    void fillSlots(size_t numSlots)
    {
        m_slots.assign(numSlots, -1);
        for (size_t page = 0; page < m_pages.size(); ++page)
            m_slots[slotOf(m_pages[page].key)] = static_cast<int>(page);
    }

    std::vector<Page> m_pages;
    std::vector<int> m_slots; ///< by hash, the place of a page; -1 where none is. A power of two, at most half full
    int m_size = 0;
};

} // namespace znGeom::internal
