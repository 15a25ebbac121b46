#include "znGeom/planar/internal/end_grid.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace znGeom::internal {

using znLinear::PointFlt;

namespace {

constexpr float greatest = std::numeric_limits<float>::max();

bool isFinite(const PointFlt& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

double greatestCoordinate(const zn::vector<PointFlt>& points)
{
    float coordinate = 0;
    for (const PointFlt& p : points)
        if (isFinite(p)) coordinate = std::max({coordinate, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    return coordinate;
}

} // namespace

EndGrid::EndGrid(const zn::vector<PointFlt>& points, float reach) : m_reach(std::min(reach, greatest))
{
    // Boxes seldom lie across cells when these are several times as wide; their numbers have to fit.
    constexpr double boxesPerCell = 4, manyCells = 0x1p50;
    const double finest = greatestCoordinate(points) / manyCells;
    m_cell = std::max(2 * boxesPerCell * static_cast<double>(m_reach), finest);
    if (!(m_cell > 0)) m_cell = 1;

    const std::uint32_t numBuckets = std::bit_ceil(static_cast<std::uint32_t>(std::max(points.size(), 2)));
    m_shift = 64 - std::countr_zero(numBuckets);
    m_starts.setSize(static_cast<int>(numBuckets) + 1);
    zn::vector<std::uint32_t> buckets(points.size());
    for (int i = 0; i < points.size(); ++i)
        if (isFinite(points[i])) ++m_starts[static_cast<int>(buckets[i] = bucketOf(points[i]))];
    int sum = 0;
    for (int& start : m_starts) start = sum += start;
    m_entries.setSize(sum);
    for (int i = points.size() - 1; i >= 0; --i)
        if (isFinite(points[i])) m_entries[--m_starts[static_cast<int>(buckets[i])]] = {points[i], i};
}

std::uint32_t EndGrid::bucketOf(std::int64_t x, std::int64_t y, std::int64_t z) const
{
    const auto mixed = [](std::uint64_t value) {
        value *= 0x9E3779B97F4A7C15u;
        return value ^ value >> 32;
    };
    const std::uint64_t hash = mixed(mixed(mixed(static_cast<std::uint64_t>(x)) + static_cast<std::uint64_t>(y)) +
                                     static_cast<std::uint64_t>(z));
    return static_cast<std::uint32_t>(hash * 0x9E3779B97F4A7C15u >> m_shift);
}

void EndGrid::findNear(const PointFlt& place, std::vector<int>& found) const
{
    found.clear();
    if (!isFinite(place) || !(m_reach >= 0)) return;
    PointFlt low, high;
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::max(place[axis] - m_reach, -greatest);
        high[axis] = std::min(place[axis] + m_reach, greatest);
    }
    const auto isInside = [&](const PointFlt& p) {
        return p.x >= low.x && p.x <= high.x && p.y >= low.y && p.y <= high.y && p.z >= low.z && p.z <= high.z;
    };
    int numCells = 0;
    for (std::int64_t x = cellOf(low.x); x <= cellOf(high.x); ++x)
        for (std::int64_t y = cellOf(low.y); y <= cellOf(high.y); ++y)
            for (std::int64_t z = cellOf(low.z); z <= cellOf(high.z); ++z, ++numCells) {
                const int bucket = static_cast<int>(bucketOf(x, y, z));
                for (int i = m_starts[bucket]; i < m_starts[bucket + 1]; ++i)
                    if (isInside(m_entries[i].point)) found.push_back(m_entries[i].index);
            }
    if (numCells == 1) return;
    // Two cells may share a bucket.
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
}

} // namespace znGeom::internal
