/// Sets that can be united.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tool {

/// Each set is known by its lowest member. At `parents[member]` stands a lower member of the same set, or the member
/// itself. Union-find with halved paths (van der Weide 1980).
inline int findSet(std::vector<int>& parents, int member)
{
    const auto parent = [&parents](int of) -> int& { return parents[static_cast<std::size_t>(of)]; };
    while (parent(member) != member) {
        parent(member) = parent(parent(member));
        member = parent(member);
    }
    return member;
}

inline void uniteSets(std::vector<int>& parents, int a, int b)
{
    a = findSet(parents, a);
    b = findSet(parents, b);
    parents[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
}

} // namespace tool
