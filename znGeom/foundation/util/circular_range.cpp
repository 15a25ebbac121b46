#include "znGeom/foundation/util/circular_range.h"

#include <algorithm>

namespace znUtil {

CircularRange::CircularRange(int begin, int end, int cycleSize) : m_cycle(std::max(cycleSize, 0))
{
    if (m_cycle == 0) return;
    long long length = static_cast<long long>(end) - begin;
    if (length < 0) length += m_cycle;
    m_size = static_cast<int>(std::clamp<long long>(length, 0, m_cycle));
    m_begin = begin % m_cycle;
    if (m_begin < 0) m_begin += m_cycle;
}

int CircularRange::offset(int index) const
{
    const int distance = static_cast<int>((static_cast<long long>(index) - m_begin) % m_cycle);
    return distance < 0 ? distance + m_cycle : distance;
}

bool CircularRange::contains(int index) const { return m_cycle > 0 && offset(index) < m_size; }

bool CircularRange::contains(const CircularRange& other) const
{
    if (other.m_size == 0 || m_size == m_cycle) return true;
    return m_cycle > 0 && offset(other.m_begin) + other.m_size <= m_size;
}

CircularRange CircularRange::intersect(const CircularRange& other) const
{
    if (m_size == 0 || other.m_size == 0) return {m_begin, m_begin, m_cycle};
    if (other.m_size == m_cycle) return *this;
    if (m_size == m_cycle) return other;
    const int start = offset(other.m_begin);
    // `other` may reach the begin of this range from behind; that piece comes first.
    const int reached = start + other.m_size - m_cycle;
    if (reached > 0) return {m_begin, m_begin + std::min(reached, m_size), m_cycle};
    if (start >= m_size) return {m_begin, m_begin, m_cycle};
    return {other.m_begin, other.m_begin + std::min(other.m_size, m_size - start), m_cycle};
}

CircularRange CircularRange::merge(const CircularRange& other) const
{
    if (other.m_size == 0) return *this;
    if (m_size == 0) return other;
    const int start = offset(other.m_begin), end = start + other.m_size;
    if (start > m_size && end >= m_cycle) { // `other` reaches our begin from behind: start where it starts
        const int length = std::max(other.m_size, m_cycle - start + m_size);
        return {other.m_begin, other.m_begin + std::min(length, m_cycle), m_cycle};
    }
    return {m_begin, m_begin + std::min(std::max(m_size, end), m_cycle), m_cycle};
}

CircularRange CircularRange::firstHalf() const { return {m_begin, m_begin + m_size / 2, m_cycle}; }

CircularRange CircularRange::secondHalf() const { return {m_begin + m_size / 2, m_begin + m_size, m_cycle}; }

void merge(zn::vector<CircularRange>& ranges)
{
    std::sort(ranges.begin(), ranges.end(),
              [](const CircularRange& a, const CircularRange& b) { return a.begin() < b.begin(); });
    zn::vector<CircularRange> joined;
    for (const CircularRange& range : ranges) {
        if (range.size() == 0) continue;
        if (!joined.empty() && range.begin() <= joined.back().end())
            joined.back() = joined.back().merge(range);
        else
            joined.append(range);
    }
    // The last range may run past the end of the cycle into the first ones.
    while (joined.size() > 1 && joined.back().end() - joined.back().cycleSize() >= joined.front().begin()) {
        joined.back() = joined.back().merge(joined.front());
        joined.erase(joined.begin());
    }
    ranges.swap(joined);
}

void subtract(zn::vector<CircularRange>& ranges, const CircularRange& removed)
{
    zn::vector<CircularRange> kept;
    for (const CircularRange& range : ranges) {
        if (range.size() == 0) continue;
        const int cycle = range.cycleSize(), size = range.size();
        const auto keep = [&kept, &range, cycle](int first, int last) {
            if (first < last) kept.append(CircularRange(range.begin() + first, range.begin() + last, cycle));
        };
        // After the begin of the range, `removed` takes [from, to), and at the begin the part of it that lies beyond
        // the cycle.
        const int from = (removed.begin() - range.begin() + cycle) % cycle, to = from + removed.size();
        keep(std::max(0, to - cycle), std::min(from, size));
        keep(std::max(from, std::min(to, size)), size);
    }
    ranges.swap(kept);
}

} // namespace znUtil
