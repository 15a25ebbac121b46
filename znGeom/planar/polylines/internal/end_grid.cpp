#include "znGeom/planar/polylines/internal/end_grid.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace znGeom::internal {

using znLinear::PointFlt;

namespace {

bool isFinite(const PointFlt& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

/// How wide a cell is that holds boxes of this half width in few cells. Where coordinates are so large that they step
/// by more than the tolerance, a box reaches to the next step.
double cellSize(const zn::vector<PointFlt>& ends, float tolerance)
{
    constexpr double boxesPerCell = 4, fewSteps = 8 * double(std::numeric_limits<float>::epsilon());
    double largest = 0;
    for (const PointFlt& end : ends)
        if (isFinite(end))
            largest = std::max({largest, double(std::fabs(end.x)), double(std::fabs(end.y)), double(std::fabs(end.z))});
    const double reach = double(std::min(tolerance, std::numeric_limits<float>::max()));
    const double size = std::max(2 * boxesPerCell * reach, largest * fewSteps);
    return size > 0 ? size : 1; // also when the tolerance is no number
}

} // namespace

EndGrid::EndGrid(const zn::vector<PointFlt>& ends, float tolerance)
    : m_tolerance(tolerance), m_cellsPerUnit(1 / cellSize(ends, tolerance))
{
    m_mask = std::bit_ceil(static_cast<unsigned>(std::max(ends.size(), 1))) - 1;
    m_firsts = zn::vector<int>(static_cast<int>(m_mask) + 2, 0);
    zn::vector<int> buckets(ends.size(), -1);
    for (int i = 0; i < ends.size(); ++i) {
        if (!isFinite(ends[i])) continue;
        const double x = double(ends[i].x), y = double(ends[i].y), z = double(ends[i].z);
        buckets[i] = bucketOf(cellAlong(x), cellAlong(y), cellAlong(z));
        ++m_firsts[buckets[i] + 1];
    }
    for (int bucket = 0; bucket + 1 < m_firsts.size(); ++bucket) m_firsts[bucket + 1] += m_firsts[bucket];
    m_entries.setSize(m_firsts.back());
    zn::vector<int> next = m_firsts;
    for (int i = 0; i < ends.size(); ++i)
        if (buckets[i] >= 0) m_entries[next[buckets[i]]++] = {ends[i], i};
}

const zn::vector<int>& EndGrid::findNear(const PointFlt& centre)
{
    m_found.clear();
    if (!isFinite(centre)) return m_found;
    const float low[] = {centre.x - m_tolerance, centre.y - m_tolerance, centre.z - m_tolerance};
    const float high[] = {centre.x + m_tolerance, centre.y + m_tolerance, centre.z + m_tolerance};
    double cells[3][2];
    int numCells[3];
    for (int axis = 0; axis < 3; ++axis) {
        cells[axis][0] = cellAlong(double(low[axis]));
        cells[axis][1] = cellAlong(double(high[axis]));
        numCells[axis] = cells[axis][0] == cells[axis][1] ? 1 : 2;
    }
    int seen[8], numSeen = 0; // cells may share a bucket
    for (int i = 0; i < numCells[0]; ++i)
        for (int j = 0; j < numCells[1]; ++j)
            for (int k = 0; k < numCells[2]; ++k) {
                const int bucket = bucketOf(cells[0][i], cells[1][j], cells[2][k]);
                if (std::find(seen, seen + numSeen, bucket) != seen + numSeen) continue;
                seen[numSeen++] = bucket;
                addFrom(bucket, low, high);
            }
    if (numSeen > 1) std::sort(m_found.begin(), m_found.end());
    return m_found;
}

double EndGrid::cellAlong(double coordinate) const
{
    constexpr double farthest = double(std::numeric_limits<float>::max()); // of what is found; boxes may reach beyond
    return std::floor(std::clamp(coordinate, -farthest, farthest) * m_cellsPerUnit);
}

int EndGrid::bucketOf(double x, double y, double z) const
{
    // -0 and 0 are one cell.
    const auto bits = [](double cell) { return std::bit_cast<std::uint64_t>(cell + 0.0); };
    std::uint64_t hash = bits(x) * 0x9E3779B97F4A7C15u;
    hash = (hash ^ (hash >> 32) ^ bits(y)) * 0xC2B2AE3D27D4EB4Fu;
    hash = (hash ^ (hash >> 32) ^ bits(z)) * 0x165667B19E3779F9u;
    return static_cast<int>((hash >> 32) & m_mask);
}

void EndGrid::addFrom(int bucket, const float* low, const float* high)
{
    const auto isIn = [=](const PointFlt& p) {
        return p.x >= low[0] && p.x <= high[0] && p.y >= low[1] && p.y <= high[1] && p.z >= low[2] && p.z <= high[2];
    };
    for (int i = m_firsts[bucket]; i < m_firsts[bucket + 1]; ++i)
        if (isIn(m_entries[i].point)) m_found.append(m_entries[i].index);
}

} // namespace znGeom::internal
