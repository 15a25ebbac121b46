#include "znGeom/spatial/trees/internal/box_hierarchy.h"

#include <algorithm>
#include <limits>

namespace znGeom::internal {

void BoxGroup::set(int place, const BoundingBox& box)
{
    const float *lows = &box.minX, *highs = &box.maxX;
    for (int axis = 0; axis < 3; ++axis) {
        low[axis][place] = lows[axis];
        high[axis][place] = highs[axis];
    }
}

void BoxGroup::setNone(int place)
{
    for (int axis = 0; axis < 3; ++axis) {
        low[axis][place] = std::numeric_limits<float>::infinity();
        high[axis][place] = -std::numeric_limits<float>::infinity();
    }
}

void BoxGroup::setAround(int place, const BoxGroup& group)
{
    for (int axis = 0; axis < 3; ++axis) {
        low[axis][place] = *std::min_element(group.low[axis], group.low[axis] + width);
        high[axis][place] = *std::max_element(group.high[axis], group.high[axis] + width);
    }
}

void BoxHierarchy::makeNodes(int numElements)
{
    numLeaves = (numElements - 1) / width + 1;
    const int numLowest = (numLeaves - 1) / width + 1;
    for (int onLevel = 1; onLevel < numLowest; onLevel *= width) firstLowest = width * firstLowest + 1;
    numNodes = firstLowest + numLowest;
    nodes = makeAlignedArray<BoxGroup>(static_cast<size_t>(numNodes));
}

void BoxHierarchy::fillUpperNodes()
{
    int first = firstLowest, count = numNodes - firstLowest;
    while (first > 0) {
        const int firstAbove = (first - 1) / width, countAbove = (count - 1) / width + 1;
        for (int i = 0; i < width * countAbove; ++i) {
            BoxGroup& above = nodes[static_cast<size_t>(firstAbove + i / width)];
            if (i < count)
                above.setAround(i % width, nodes[static_cast<size_t>(first + i)]);
            else
                above.setNone(i % width);
        }
        first = firstAbove;
        count = countAbove;
    }
}

} // namespace znGeom::internal
