/// Which children of an octree's cell a box meets.
#pragma once

#include "znGeom/spatial/trees/octree.h"

namespace znGeom::internal {

/// Which children of a cell a box overlaps or touches: bit i for child i. Exact for a cell that the box itself meets:
/// only the middle of such a cell is left to compare with.
inline unsigned meetingChildren(const BoundingBox& cell, const BoundingBox& box)
{
    const auto halves = [](float low, float high, float boxLow, float boxHigh, unsigned lows, unsigned highs) {
        const float middle = OctreeIterator::middle(low, high);
        return (boxLow <= middle ? lows : 0u) | (middle <= boxHigh ? highs : 0u);
    };
    return halves(cell.minX, cell.maxX, box.minX, box.maxX, 0x55, 0xAA) &
           halves(cell.minY, cell.maxY, box.minY, box.maxY, 0x33, 0xCC) &
           halves(cell.minZ, cell.maxZ, box.minZ, box.maxZ, 0x0F, 0xF0);
}

} // namespace znGeom::internal
