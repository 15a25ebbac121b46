/// Which of several exactly equally near triangles a walk over the leaves of an octree meets first.
#pragma once

#include <vector>

#include "znGeom/spatial/queries/octree_closest.h"

namespace znGeom::internal {

/// A triangle whose leaves are sought: its number, its corners, and the box of these.
struct SoughtTriangle
{
    int number;
    float corners[9];
    BoundingBox box;
};

/// Looks for the nearest leaf of an octree that lists any of some given triangles.
class FirstLeaf
{
public:
    FirstLeaf(const Octree& octree, const OctreeTris& octreeTris);

    /// \param sought   ascending numbers
    /// \param within2  leaves that are not nearer than the square root of this do not count
    /// \param walk     to be used where several leaves are exactly equally near
    /// \return the place in `sought` of the triangle that a walk from the point meets first; -1 when no leaf that
    ///         counts lists any
    int find(const SoughtTriangle* sought, int count, const znLinear::PointFlt& point, double within2,
             OctreeClosestIt& walk);

private:
    struct Cell
    {
        double distance2;
        OctreeIterator at;
    };

    OctreeIterator descend(const BoundingBox& box) const;
    int pushChildren(const Cell& cell, const BoundingBox& box, const znLinear::PointFlt& point, Cell* stack) const;
    int firstListed(const OctreeIterator& leaf) const;
    bool isListed(const SoughtTriangle& triangle, const OctreeIterator& leaf) const;

    const Octree& m_octree;
    const OctreeTris& m_octreeTris;
    std::vector<Cell> m_stack;
    const SoughtTriangle* m_sought = nullptr;
    int m_count = 0;
};

} // namespace znGeom::internal
