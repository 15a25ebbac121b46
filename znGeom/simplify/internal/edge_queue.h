/// A queue of edges by cost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace znGeom::internal {

/// Edges, named by numbers, the cheapest first; of equal costs the one that was priced first. A heap of four branches
/// that knows where each edge is, so that any can be priced anew or taken out.
class EdgeQueue
{
public:
    struct Entry
    {
        double cost;
        std::uint32_t age; ///< the larger, the later it was priced
        int edge;
    };

    /// \param numEdges  the numbers lie below it
    explicit EdgeQueue(int numEdges) : m_places(static_cast<std::size_t>(numEdges), -1) {}

    bool empty() const { return m_entries.empty(); }
    const Entry& top() const { return m_entries.front(); }
    bool holds(int edge) const { return m_places[static_cast<std::size_t>(edge)] >= 0; }

    /// Adds an edge at the end, for now in no order: its cost is still to be set. `order` follows.
    void append(int edge)
    {
        m_places[static_cast<std::size_t>(edge)] = static_cast<int>(m_entries.size());
        m_entries.push_back({0, m_age++, edge});
    }
    /// Sets the cost of an appended edge. For any number of threads at once, each with edges of its own.
    void setCost(int edge, double cost) { entryOf(edge).cost = cost; }
    /// Puts what was appended in order. Linear.
    void order();

    /// Gives an edge a new cost, as if it had been taken out and priced last.
    void reprice(int edge, double cost);
    void erase(int edge);
    /// Hands out what is left, in no order, and keeps no memory.
    std::vector<Entry> release()
    {
        m_places = std::vector<int>();
        std::vector<Entry> left = std::move(m_entries);
        left.shrink_to_fit();
        return left;
    }
    /// The entry of one edge becomes that of another, which has none.
    void rename(int from, int to)
    {
        const int place = std::exchange(m_places[static_cast<std::size_t>(from)], -1);
        m_places[static_cast<std::size_t>(to)] = place;
        m_entries[static_cast<std::size_t>(place)].edge = to;
    }

private:
    static constexpr std::size_t branches = 4;

    static bool isBefore(const Entry& a, const Entry& b)
    {
        return a.cost < b.cost || (a.cost == b.cost && a.age < b.age);
    }
    Entry& entryOf(int edge) { return m_entries[static_cast<std::size_t>(m_places[static_cast<std::size_t>(edge)])]; }
    void put(std::size_t place, const Entry& entry)
    {
        m_entries[place] = entry;
        m_places[static_cast<std::size_t>(entry.edge)] = static_cast<int>(place);
    }
    void siftUp(std::size_t place, const Entry& entry);
    void siftDown(std::size_t place, const Entry& entry);

    std::vector<Entry> m_entries;
    std::vector<int> m_places; ///< of each edge in the heap; -1 for those that are not in it
    std::uint32_t m_age = 0;
};

} // namespace znGeom::internal
