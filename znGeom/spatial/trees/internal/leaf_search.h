/// The search for the leaves of an octree that a box meets, one box after the other.
#pragma once

#include <bit>
#include <cstddef>
#include <memory>

#include "znGeom/spatial/trees/internal/wide_box.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom::internal {

/// The same as an `OctreeIterator`, with a wide box.
struct Cell
{
    WideBox box;
    const OctreeNode* node = nullptr; ///< null for none
};

/// Finds the leaves that a box meets, as `OctreeBBoxIntersectIt` delivers them, for boxes that tend to be small and
/// close to the one before: a search begins at the lowest cell above the last one that holds the whole box.
class LeafSearch
{
public:
    explicit LeafSearch(const Octree& octree)
        : m_path(std::make_unique<Cell[]>(static_cast<size_t>(octree.maxDepth()))),
          m_stack(std::make_unique<Cell[]>(8 * static_cast<size_t>(octree.maxDepth())))
    {
        m_path[0] = {WideBox::of(octree.getRoot().box), octree.getRoot().node};
        Octree::getNodeOrdering(znLinear::Vector::x, m_order);
        for (unsigned axes = 0; axes < 8; ++axes) {
            m_withLow[axes] = m_withHigh[axes] = 0;
            for (int k = 0; k < 8; ++k) {
                const unsigned child = static_cast<unsigned>(m_order[k]);
                if ((child | axes) == 7) m_withLow[axes] |= 1u << k;
                if ((child & ~axes) == 0) m_withHigh[axes] |= 1u << k;
            }
        }
    }

    /// Calls `visit(leaf)` for each.
    template <typename Visit>
    void forEachLeaf(const WideBox& box, const Visit& visit)
    {
        if (!box.isValid()) return;
        while (m_level > 0 && !m_path[m_level].box.containsStrictly(box)) --m_level;
        if (m_level == 0 && !m_path[0].box.intersects(box)) return;
        Cell* const stack = m_stack.get();
        int size = 0;
        for (Cell cell = descendWhileOneChildMeets(box);;) {
            if (cell.node->isLeaf) {
                visit(cell);
            } else if (pushMeetingChildren(cell, box, stack, size)) {
                continue;
            }
            if (size == 0) return;
            cell = stack[--size];
        }
    }

private:
    static Float4 middleOf(const Cell& cell) { return (cell.box.low + cell.box.high) * Float4{0.5f, 0.5f, 0.5f, 0.5f}; }
    static Cell childOf(const Cell& cell, Float4 middle, int child)
    {
        return {{pick(child, middle, cell.box.low), pick(child, cell.box.high, middle)},
                cell.node + cell.node->firstChild + child};
    }

    /// Which children of a cell that meets the box meet it as well: bit k for child `m_order[k]`. A low half does when
    /// the box begins before the middle, a high half when it ends after it.
    unsigned meetingChildren(Float4 middle, const WideBox& box) const
    {
        return m_withLow[placesLessOrEqual(box.low, middle)] & m_withHigh[placesLessOrEqual(middle, box.high)];
    }

    /// Goes on to the first child that meets the box, and puts the others on the stack; false where there is none.
    bool pushMeetingChildren(Cell& cell, const WideBox& box, Cell* stack, int& size) const
    {
        const Float4 middle = middleOf(cell);
        unsigned meeting = meetingChildren(middle, box);
        if (meeting == 0) return false;
        for (; (meeting & (meeting - 1)) != 0;) {
            const int last = std::bit_width(meeting) - 1;
            stack[size++] = childOf(cell, middle, m_order[last]);
            meeting ^= 1u << last;
        }
        cell = childOf(cell, middle, m_order[std::countr_zero(meeting)]);
        return true;
    }

    /// The path ends at the last cell above the result.
    Cell descendWhileOneChildMeets(const WideBox& box)
    {
        Cell cell = m_path[m_level];
        while (!cell.node->isLeaf) {
            m_path[m_level] = cell;
            const Float4 middle = middleOf(cell);
            const unsigned meeting = meetingChildren(middle, box);
            if (meeting == 0 || (meeting & (meeting - 1)) != 0) break;
            cell = childOf(cell, middle, m_order[std::countr_zero(meeting)]);
            if (!cell.node->isLeaf) ++m_level;
        }
        return cell;
    }

    std::unique_ptr<Cell[]> m_path; ///< from the root on; below the root only cells that are split
    size_t m_level = 0;             ///< the last one of the path
    std::unique_ptr<Cell[]> m_stack;
    int m_order[8];
    /// Indexed by the axes (as bits) on which a box meets the low halves: the children that this allows, as places in
    /// `m_order`; and likewise for the high halves.
    unsigned m_withLow[8], m_withHigh[8];
};

} // namespace znGeom::internal
