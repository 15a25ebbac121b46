/// `znGeom::QuadtreeIntersectIt`: the leaves of a quadtree that a box meets.
#pragma once

#include <memory>

#include "znGeom/spatial/trees/quadtree.h"

namespace znGeom {

/// The leaves whose x and y overlap or touch those of a box, depth first in child order 0 to 3. The quadtree is
/// borrowed and must outlive the traversal; a temporary one is refused. The box is copied. Each `reset` allocates
/// memory; the end of the walk frees it.
class ZNGEOM_API QuadtreeIntersectIt
{
public:
    /// Invalid.
    QuadtreeIntersectIt();
    QuadtreeIntersectIt(const Quadtree& quadtree, const BoundingBox& query);
    QuadtreeIntersectIt(const Quadtree&&, const BoundingBox&) = delete;
    QuadtreeIntersectIt(const QuadtreeIntersectIt&) = delete;
    QuadtreeIntersectIt& operator=(const QuadtreeIntersectIt&) = delete;
    ~QuadtreeIntersectIt();

    /// Starts anew: valid unless the query misses the root.
    void reset(const Quadtree& quadtree, const BoundingBox& query);
    void reset(const Quadtree&&, const BoundingBox&) = delete;
    bool valid() const { return m_record != nullptr; }
    /// Requires a valid iterator, as does `get`.
    void next();
    /// The current leaf.
    QuadtreeIterator get() const;

private:
    struct Record;
    std::unique_ptr<Record> m_record; ///< null once the walk is over
};

} // namespace znGeom
