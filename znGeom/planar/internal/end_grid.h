/// `znGeom::internal::EndGrid`: the ends of segments by place.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom::internal {

/// A hash grid over points that finds those in small boxes. Points that are not finite are not in it.
class EndGrid
{
public:
    /// \param reach  half the size of the boxes that will be asked for
    EndGrid(const zn::vector<znLinear::PointFlt>& points, float reach);

    /// Replaces `found` by the indices of the points in the box round a place, inclusive, in ascending order.
    void findNear(const znLinear::PointFlt& place, std::vector<int>& found) const;

private:
    struct Entry
    {
        znLinear::PointFlt point;
        int index;
    };

    std::int64_t cellOf(double coordinate) const { return static_cast<std::int64_t>(std::floor(coordinate / m_cell)); }
    std::uint32_t bucketOf(std::int64_t x, std::int64_t y, std::int64_t z) const;
    std::uint32_t bucketOf(const znLinear::PointFlt& p) const
    {
        return bucketOf(cellOf(p.x), cellOf(p.y), cellOf(p.z));
    }

    float m_reach;
    double m_cell = 1;
    int m_shift = 0;
    zn::vector<int> m_starts; ///< of the entries of each bucket, and their number at the end
    zn::vector<Entry> m_entries;
};

} // namespace znGeom::internal
