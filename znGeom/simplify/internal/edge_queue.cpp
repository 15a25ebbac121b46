#include "znGeom/simplify/internal/edge_queue.h"

#include <algorithm>

namespace znGeom::internal {

void EdgeQueue::order()
{
    for (std::size_t place = m_entries.size() / branches + 1; place-- > 0;)
        if (place < m_entries.size()) siftDown(place, Entry(m_entries[place]));
}

void EdgeQueue::reprice(int edge, double cost)
{
    const auto place = static_cast<std::size_t>(m_places[static_cast<std::size_t>(edge)]);
    const bool isDearer = !(cost < m_entries[place].cost);
    const Entry entry{cost, m_age++, edge};
    isDearer ? siftDown(place, entry) : siftUp(place, entry);
}

void EdgeQueue::erase(int edge)
{
    const auto place = static_cast<std::size_t>(std::exchange(m_places[static_cast<std::size_t>(edge)], -1));
    const Entry last = m_entries.back(), gone = m_entries[place];
    m_entries.pop_back();
    if (place == m_entries.size()) return;
    isBefore(last, gone) ? siftUp(place, last) : siftDown(place, last);
}

void EdgeQueue::siftUp(std::size_t place, const Entry& entry)
{
    while (place > 0) {
        const std::size_t parent = (place - 1) / branches;
        if (!isBefore(entry, m_entries[parent])) break;
        put(place, m_entries[parent]);
        place = parent;
    }
    put(place, entry);
}

void EdgeQueue::siftDown(std::size_t place, const Entry& entry)
{
    for (;;) {
        const std::size_t first = place * branches + 1;
        if (first >= m_entries.size()) break;
        const std::size_t end = std::min(first + branches, m_entries.size());
        std::size_t least = first;
        for (std::size_t child = first + 1; child < end; ++child)
            if (isBefore(m_entries[child], m_entries[least])) least = child;
        if (!isBefore(m_entries[least], entry)) break;
        put(place, m_entries[least]);
        place = least;
    }
    put(place, entry);
}

} // namespace znGeom::internal
