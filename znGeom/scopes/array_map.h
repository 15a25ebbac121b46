/// `znGeom::ArrayMap`: a map that is one flat array.
#pragma once

#include <algorithm>
#include <type_traits>
#include <utility>

#include "znGeom/foundation/containers/vector.h"

namespace znGeom {

/// Pairs of a key and a value, searched by bisection. Made for maps that are filled once, in nearly sorted order, and
/// then read often: append all pairs, sort, look up.
///
/// A pair whose value is the null value counts as absent: -1 for numbers, the null handle for handles. Removing a pair
/// means writing the null value into it; `compact` drops such pairs. Keys are different; an iterator is a pointer to a
/// pair and good until the next append, sort or compaction.
template <typename K, typename V>
class ArrayMap
{
public:
    using Pair = std::pair<K, V>;

    static constexpr V nullValue()
    {
        if constexpr (std::is_arithmetic_v<V>)
            return V(-1);
        else
            return V();
    }

    void reserve(int count) { m_pairs.reserve(count); }
    void clear()
    {
        m_pairs.clear();
        m_sorted = true;
    }
    /// All pairs, removed ones included.
    int size() const { return m_pairs.size(); }
    bool empty() const { return m_pairs.empty(); }

    /// Adds a pair at the end, after which the map counts as unsorted.
    void append(const K& key, const V& value)
    {
        m_pairs.append(Pair(key, value));
        m_sorted = false;
    }

    /// Sorts by key; linear where the pairs are in order already.
    void sort()
    {
        const auto lower = [](const Pair& a, const Pair& b) { return a.first < b.first; };
        if (!std::is_sorted(m_pairs.begin(), m_pairs.end(), lower)) std::sort(m_pairs.begin(), m_pairs.end(), lower);
        m_sorted = true;
    }
    bool isSorted() const { return m_sorted; }

    /// The pair of a key, or `end` when there is none or its value is the null value. Sorts first where that is due.
    Pair* find(const K& key)
    {
        if (!m_sorted) sort();
        return const_cast<Pair*>(std::as_const(*this).find(key));
    }
    /// The same for a sorted map.
    const Pair* find(const K& key) const
    {
        const Pair* const found = std::lower_bound(
            m_pairs.begin(), m_pairs.end(), key, [](const Pair& pair, const K& sought) { return pair.first < sought; });
        const bool isThere = found != m_pairs.end() && !(key < found->first) && found->second != nullValue();
        return isThere ? found : m_pairs.end();
    }
    /// The value of a key, or the null value. For a sorted map.
    V operator[](const K& key) const
    {
        const Pair* const found = find(key);
        return found == m_pairs.end() ? nullValue() : found->second;
    }

    /// Drops the pairs with the null value; the others keep their order.
    void compact()
    {
        const Pair* const end =
            std::remove_if(m_pairs.begin(), m_pairs.end(), [](const Pair& pair) { return pair.second == nullValue(); });
        m_pairs.setSize(static_cast<int>(end - m_pairs.begin()));
    }

    Pair* begin() { return m_pairs.begin(); }
    Pair* end() { return m_pairs.end(); }
    const Pair* begin() const { return m_pairs.begin(); }
    const Pair* end() const { return m_pairs.end(); }

private:
    zn::vector<Pair> m_pairs;
    bool m_sorted = true;
};

} // namespace znGeom
