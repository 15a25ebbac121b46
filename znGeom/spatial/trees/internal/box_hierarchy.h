/// Boxes in groups of eight, one above the other: the upper part of trees over triangles.
#pragma once

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/machine/internal/aligned_array.h"

namespace znGeom::internal {

/// Eight boxes, coordinate by coordinate.
struct alignas(64) BoxGroup
{
    static constexpr int width = 8;
    float low[3][width], high[3][width];

    void set(int place, const BoundingBox& box);
    /// A box infinitely far from everything, which nothing meets.
    void setNone(int place);
    /// The box around the boxes of a group.
    void setAround(int place, const BoxGroup& group);
};

/// A heap in which each node has eight children: those of node g are 8 g + 1 to 8 g + 8, and the node holds their
/// boxes. The children of the nodes on the last level are leaves, each with eight elements; all leaves but the last are
/// full, so that no links are needed.
struct BoxHierarchy
{
    static constexpr int width = BoxGroup::width;
    /// The most that a walk depth first can have waiting: ten levels, with seven siblings on each.
    static constexpr int stackSize = 10 * (width - 1) + width + 1;

    int firstLowest = 0; ///< the first of the nodes whose children are leaves
    int numNodes = 0, numLeaves = 0;
    AlignedArray<BoxGroup> nodes{nullptr, {0}};

    /// Makes room for the nodes above a number of elements, at least one.
    void makeNodes(int numElements);
    /// Fills the levels above the last, from the bottom up.
    void fillUpperNodes();
};

} // namespace znGeom::internal
