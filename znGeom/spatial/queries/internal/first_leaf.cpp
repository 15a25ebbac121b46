#include "znGeom/spatial/queries/internal/first_leaf.h"

#include <algorithm>
#include <bit>

#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/spatial/shapes/box_predicates.h"
#include "znGeom/spatial/trees/internal/meeting_children.h"

namespace znGeom::internal {

using znLinear::PointFlt;

namespace {

bool overlapOnEveryAxis(const BoundingBox& a, const BoundingBox& b)
{
    return a.minX < b.maxX && b.minX < a.maxX && a.minY < b.maxY && b.minY < a.maxY && a.minZ < b.maxZ &&
           b.minZ < a.maxZ;
}

} // namespace

/// On each level, seven siblings may be waiting.
FirstLeaf::FirstLeaf(const Octree& octree, const OctreeTris& octreeTris)
    : m_octree(octree), m_octreeTris(octreeTris), m_stack(8 * static_cast<size_t>(octree.maxDepth()))
{}

/// The lowest cell to which a box can be followed while only a single child meets it.
OctreeIterator FirstLeaf::descend(const BoundingBox& box) const
{
    OctreeIterator cell = m_octree.getRoot();
    while (!cell.node->isLeaf) {
        const unsigned meeting = meetingChildren(cell.box, box);
        if (meeting == 0 || (meeting & (meeting - 1)) != 0) break;
        cell.descend(std::countr_zero(meeting));
    }
    return cell;
}

/// Leaves the nearest child on top.
int FirstLeaf::pushChildren(const Cell& cell, const BoundingBox& box, const PointFlt& point, Cell* stack) const
{
    int count = 0;
    for (unsigned meeting = meetingChildren(cell.at.box, box); meeting != 0; meeting &= meeting - 1) {
        Cell child{0, cell.at};
        child.at.descend(std::countr_zero(meeting));
        znUtil::prefetch(child.at.node);
        child.distance2 = child.at.box.distance2(point);
        int place = count++;
        for (; place > 0 && stack[place - 1].distance2 < child.distance2; --place) stack[place] = stack[place - 1];
        stack[place] = child;
    }
    return count;
}

int FirstLeaf::find(const SoughtTriangle* sought, int count, const PointFlt& point, double within2,
                    OctreeClosestIt& walk)
{
    m_sought = sought;
    m_count = count;
    BoundingBox box;
    for (int i = 0; i < count; ++i) box.extend(sought[i].box);
    Cell* const stack = m_stack.data();
    stack[0].at = descend(box);
    stack[0].distance2 = stack[0].at.box.distance2(point);
    double least2 = within2;
    int first = -1;
    bool isShared = false; // by leaves that differ in what they list first
    for (int size = 1; size > 0;) {
        const Cell cell = stack[--size];
        if (cell.distance2 > least2 || cell.distance2 >= within2) continue;
        if (!cell.at.node->isLeaf) {
            size += pushChildren(cell, box, point, stack + size);
            continue;
        }
        const int listed = firstListed(cell.at);
        if (listed < 0) continue;
        isShared = cell.distance2 == least2 && (isShared || listed != first);
        least2 = cell.distance2;
        first = listed;
    }
    if (!isShared) return first;
    for (walk.reset(m_octree, point); walk.valid(); walk.next())
        if (walk.getDistance2() == least2 && (first = firstListed(walk.get())) >= 0) break;
    return first;
}

/// The first of the sought triangles that a leaf lists; -1 when it lists none.
int FirstLeaf::firstListed(const OctreeIterator& leaf) const
{
    for (int i = 0; i < m_count; ++i)
        if (m_sought[i].box.intersects(leaf.box) && isListed(m_sought[i], leaf)) return i;
    return -1;
}

/// Where the boxes of triangle and leaf share more than a face, the leaf lists what it truly meets. Otherwise the
/// triangle may lie wholly in the adjacent leaf and be listed in that one alone.
bool FirstLeaf::isListed(const SoughtTriangle& triangle, const OctreeIterator& leaf) const
{
    const float* corners = triangle.corners;
    if (overlapOnEveryAxis(triangle.box, leaf.box))
        return contains(leaf.box, PointFlt(corners)) || contains(leaf.box, PointFlt(corners + 3)) ||
               contains(leaf.box, PointFlt(corners + 6)) || intersects(leaf.box, corners, corners + 3, corners + 6);
    const int number = leaf.node->leafIndex;
    const int* listed = m_octreeTris.firstTri(number);
    return std::binary_search(listed, listed + m_octreeTris.numTris(number), triangle.number);
}

} // namespace znGeom::internal
