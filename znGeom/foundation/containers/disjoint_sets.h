/// `zn::DisjointSets`: sets that can be united.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "znGeom/foundation/containers/vector.h"

namespace zn {

/// The numbers 0, 1, ..., size - 1 in sets, each at first in one of its own. A set is known by its lowest member.
///
/// Union-find (Tarjan 1975) with halved paths (van der Weide 1980): as good as constant per call.
class DisjointSets
{
public:
    explicit DisjointSets(int size) : m_parents(size) { std::iota(m_parents.begin(), m_parents.end(), 0); }

    int size() const { return m_parents.size(); }

    /// The lowest member of the set that has this one.
    int find(int member)
    {
        int* parents = m_parents.data();
        while (parents[member] != member) member = parents[member] = parents[parents[member]];
        return member;
    }

    /// Makes one set of two; returns its lowest member.
    int unite(int a, int b)
    {
        const auto [low, high] = std::minmax({find(a), find(b)});
        return m_parents[high] = low;
    }

private:
    vector<int> m_parents; ///< a lower member of the same set, or the member itself
};

} // namespace zn
