#include "znGeom/spatial/trees/quadtree_traversal.h"

namespace znGeom {

namespace {

/// A cell on the way from the root to the current leaf, and the child that was entered last.
struct Frame
{
    QuadtreeIterator cell;
    int childCursor = -1;
};

} // namespace

struct QuadtreeIntersectIt::Record
{
    QuadtreeIterator current;
    const Quadtree& quadtree;
    BoundingBox query;
    int order[4] = {0, 1, 2, 3};
    int stackCapacity;
    int top = 0;
    std::unique_ptr<Frame[]> stack;

    Record(const Quadtree& walked, const BoundingBox& box)
        : current(walked.getRoot()), quadtree(walked), query(box), stackCapacity(walked.maxDepth()),
          stack(std::make_unique<Frame[]>(static_cast<size_t>(stackCapacity)))
    {
        stack[0].cell = current;
    }

    Frame& frame() { return stack[static_cast<size_t>(top)]; }

    /// Goes on to the next leaf; false when there is none.
    bool advance()
    {
        while (top >= 0) {
            if (++frame().childCursor == 4) {
                --top;
                continue;
            }
            QuadtreeIterator child = frame().cell;
            if (!child.descend(order[frame().childCursor]) || !query.intersects2D(child.box)) continue;
            ++top;
            frame() = {child, -1};
            if (child.node->isLeaf) {
                current = child;
                return true;
            }
        }
        return false;
    }
};

QuadtreeIntersectIt::QuadtreeIntersectIt() = default;
QuadtreeIntersectIt::QuadtreeIntersectIt(const Quadtree& quadtree, const BoundingBox& query) { reset(quadtree, query); }
QuadtreeIntersectIt::~QuadtreeIntersectIt() = default;

void QuadtreeIntersectIt::reset(const Quadtree& quadtree, const BoundingBox& query)
{
    m_record.reset();
    const QuadtreeIterator root = quadtree.getRoot();
    if (!query.intersects2D(root.box)) return;
    m_record = std::make_unique<Record>(quadtree, query);
    if (!root.node->isLeaf) next();
}

void QuadtreeIntersectIt::next()
{
    if (!m_record->advance()) m_record.reset();
}

QuadtreeIterator QuadtreeIntersectIt::get() const { return m_record->current; }

} // namespace znGeom
