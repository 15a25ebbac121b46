/// `znGeom::OctreeClosestIt`: the leaves of an octree in order of increasing distance from a point.
#pragma once

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

class OctreeClosestItImpl;

/// Walks best first: a heap holds cells by the squared distance of their boxes, the nearest one on top, and cells that
/// reach the top are replaced by their children until a leaf reaches it. After Hjaltason and Samet, "Distance Browsing
/// in Spatial Databases" (1999).
///
/// Distances count from the point narrowed to `float`. Leaves at exactly equal distance come in the order of this heap:
/// a binary one in which a new entry rises from the end while its parent is strictly greater; when the top is taken,
/// the last entry sinks from there while it is strictly greater than the lesser child, the first one if both are equal;
/// children enter in ascending order.
///
/// The octree is borrowed, and a temporary one refused. An iterator that is reset keeps its memory, so that a loop over
/// many points allocates none. A copy shares the walk of its source: it must not outlive it, nor run at the same time.
/// Belongs to one thread.
class ZNGEOM_API OctreeClosestIt
{
public:
    /// Points nowhere: must be `reset` before any other use.
    OctreeClosestIt();
    OctreeClosestIt(const Octree& octree, const znLinear::Point& point);
    OctreeClosestIt(const Octree&&, const znLinear::Point&) = delete;
    OctreeClosestIt(const OctreeClosestIt& other);
    OctreeClosestIt(OctreeClosestIt&& other) noexcept;
    OctreeClosestIt& operator=(const OctreeClosestIt&) = delete;
    ~OctreeClosestIt();

    /// Starts at the leaf that is nearest to a point. A point that is not a number meets every leaf, and so does one
    /// beyond `float`, from which all are infinitely far.
    void reset(const Octree& octree, const znLinear::Point& point);
    void reset(const Octree&&, const znLinear::Point&) = delete;
    /// False when all leaves have been delivered.
    bool valid() const;
    /// Goes to the next leaf. Requires a valid iterator, as do the functions below.
    void next();
    /// The same for callers that are done at some distance: stops before work that only leads to leaves at a squared
    /// distance of `bound2` or more.
    /// \return whether there is a next leaf nearer than that; if not, the iterator may only be `reset`
    bool nextWithin(double bound2);
    /// The current leaf.
    OctreeIterator get() const;
    /// The squared distance of its box.
    double getDistance2() const;

private:
    zn::ImplPointer<OctreeClosestItImpl> m_impl;
};

} // namespace znGeom
