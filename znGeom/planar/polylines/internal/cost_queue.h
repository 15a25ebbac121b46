/// `znGeom::internal::CostQueue`: records in the order of their costs, which change while they are taken.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <queue>
#include <vector>

#include "znGeom/foundation/machine/language.h"

namespace znGeom::internal {

/// A queue of (cost, index) for costs of 0 or more and below a limit. An entry stays where it is when its cost changes:
/// who takes it out has to find out whether it is still true.
///
/// Costs fall into buckets of some 0.4 percent. A bucket is sorted when it is reached, so that sorting and taking are
/// in the cache; what arrives in the bucket at hand or before goes to a heap, which is small where costs mostly rise.
class CostQueue
{
public:
    struct Entry
    {
        double cost;
        int index;
        friend bool operator<(const Entry& a, const Entry& b)
        {
            return a.cost != b.cost ? a.cost < b.cost : a.index < b.index;
        }
    };

    /// \param least  costs below have one bucket
    CostQueue(double least, double limit)
    {
        const std::uint64_t last = digitsOf(limit);
        m_firstDigits = std::max(digitsOf(least), last - std::min<std::uint64_t>(last, maxBuckets));
        m_buckets.resize(last - m_firstDigits + 1);
    }

    /// To be filled with the first entries without asking for one in between.
    void add(double cost, int index)
    {
        const std::size_t bucket = bucketOf(cost);
        if (bucket >= m_next)
            m_buckets[bucket].push_back({cost, index});
        else
            m_late.push({cost, index});
    }

    /// The entry of the least cost, and the lowest index among equal ones, or null. Valid until the next call.
    const Entry* front()
    {
        while (m_place == m_run.size()) {
            if (!m_late.empty()) return &m_late.top();
            if (m_next == m_buckets.size()) return nullptr;
            m_run = std::move(m_buckets[m_next++]);
            m_place = 0;
            if (!std::is_sorted(m_run.begin(), m_run.end())) std::sort(m_run.begin(), m_run.end());
        }
        return m_late.empty() || m_run[m_place] < m_late.top() ? &m_run[m_place] : &m_late.top();
    }

    /// Takes out what `front` gave.
    void popFront()
    {
        if (m_place < m_run.size() && (m_late.empty() || m_run[m_place] < m_late.top()))
            ++m_place;
        else
            m_late.pop();
    }

    /// An index that will probably come a few steps after the one at the front.
    int indexAhead() const { return m_run.empty() ? 0 : m_run[std::min(m_place + 8, m_run.size() - 1)].index; }

private:
    static constexpr std::uint64_t maxBuckets = 1 << 14;

    /// The exponent and eight digits: ascending with the number.
    static std::uint64_t digitsOf(double cost) { return std::bit_cast<std::uint64_t>(cost) >> 44; }

    std::size_t bucketOf(double cost) const
    {
        const std::uint64_t digits = digitsOf(cost);
        return digits < m_firstDigits ? 0 : static_cast<std::size_t>(digits - m_firstDigits);
    }

    struct Later
    {
        bool operator()(const Entry& a, const Entry& b) const { return b < a; }
    };

    std::uint64_t m_firstDigits = 0;
    std::vector<std::vector<Entry>> m_buckets;
    std::size_t m_next = 0;   ///< the first bucket that was not reached
    std::vector<Entry> m_run; ///< the last bucket that was reached
    std::size_t m_place = 0;  ///< in the run
    std::priority_queue<Entry, std::vector<Entry>, Later> m_late;
};

} // namespace znGeom::internal
