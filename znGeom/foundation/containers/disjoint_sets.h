/// `zn::DisjointSets`: sets that can be united.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>

#include "znGeom/foundation/machine/language.h"

namespace zn {

/// A partition of the numbers 0 to size - 1, at first each on its own. A set is known by its lowest member. Indices are
/// trusted. Union-find (Tarjan 1975) with halved paths (van der Weide 1980): as good as linear for any number of calls.
class DisjointSets
{
public:
    explicit DisjointSets(int size)
        : m_size(size), m_lower(std::make_unique_for_overwrite<int[]>(static_cast<size_t>(size)))
    {
        std::iota(m_lower.get(), m_lower.get() + size, 0);
    }

    int size() const { return m_size; }

    /// The lowest member of a number's set.
    int find(int member)
    {
        int* const lower = m_lower.get();
        while (lower[member] != member) member = lower[member] = lower[lower[member]];
        return member;
    }

    /// Makes one set of two; returns its lowest member.
    int unite(int a, int b)
    {
        const auto [low, high] = std::minmax({find(a), find(b)});
        return m_lower[static_cast<size_t>(high)] = low;
    }

    /// Some lower member of the same set, the number itself where there is none. Without a search: two numbers for
    /// which it is the same are in one set, others may be.
    int lower(int member) const { return m_lower[static_cast<size_t>(member)]; }

private:
    int m_size;
    std::unique_ptr<int[]> m_lower;
};

} // namespace zn
