/// What the octree and the quadtree are made of: one array of nodes over a permutation of point numbers.
#pragma once

#include <cstdint>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/mesh/array.h"

namespace znGeom {

/// One cell of a tree. A cell that is split has all its children, side by side; a child without points is a leaf with
/// an empty run, so that the leaves tile the root box.
struct PointTreeNode
{
    std::uint8_t isLeaf;
    int firstPoint, endPoint; ///< the half-open run of the cell's points in the index array
    int leafIndex;            ///< the number of a leaf, dense from 0 in depth-first order; -1 for a cell that is split
    int firstChild;           ///< the first child's record is this many after this one; 0 for a leaf
};

/// A place in a tree: a cell's box and its record. A plain value, copied freely; the tree must outlive it.
/// \tparam Axes  3 for eight children, 2 for four that keep the whole range in z
template <int Axes>
struct PointTreeIterator
{
    BoundingBox box;
    const PointTreeNode* node = nullptr;

    /// Points nowhere: an invalid box and no record.
    constexpr PointTreeIterator() = default;
    constexpr PointTreeIterator(const BoundingBox& nodeBox, const PointTreeNode* record) : box(nodeBox), node(record) {}

    /// Moves to child 0 to 2^Axes - 1; bit 0 of its number selects the high half in x, bit 1 in y, bit 2 in z. False on
    /// a leaf; the iterator then stays where it is.
    bool descend(int child)
    {
        if (node->isLeaf) return false;
        node += node->firstChild + child;
        halve(box, child);
        return true;
    }

    /// Replaces a cell's box by that of its child.
    static constexpr void halve(BoundingBox& box, int child)
    {
        halve(box.minX, box.maxX, child & 1);
        halve(box.minY, box.maxY, child & 2);
        if constexpr (Axes == 3) halve(box.minZ, box.maxZ, child & 4);
    }
    /// Where a cell is split on an axis: a point beyond this number lies in the high half.
    static constexpr float middle(float low, float high) { return (low + high) * 0.5f; }

private:
    static constexpr void halve(float& low, float& high, int takeHigh)
    {
        const float centre = middle(low, high);
        low = takeHigh ? centre : low;
        high = takeHigh ? high : centre;
    }
};

/// The nodes, and the permutation of the point numbers in which each leaf's points are one ascending run.
struct PointTree
{
    zn::vector<PointTreeNode> nodes; ///< the root first
    Array<int> pointIndices;
    int numLeaves = 0;
    int maxDepth = 0; ///< the number of levels, including the root
};

} // namespace znGeom
