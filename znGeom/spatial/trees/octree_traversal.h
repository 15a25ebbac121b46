/// Iterators over the leaves of an octree: all of them, or those that a frustum, a box, a ray or a sphere meets.
///
///     for (OctreeBBoxIntersectIt it(octree, box); it.valid(); it.next())
///         use(it.get().node->leafIndex);
///
/// Leaves without elements are delivered like any other. `next` and `get` require a valid iterator, which is not
/// checked. An iterator belongs to one thread; any number of them may walk one octree.
#pragma once

#include <memory>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/spatial/shapes/frustum.h"
#include "znGeom/spatial/shapes/ray.h"
#include "znGeom/spatial/shapes/sphere.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

/// The leaves that a query meets, depth first. The octree is borrowed and must outlive the traversal; a temporary one
/// is refused. The query is copied. Memory is allocated at construction only: a loop over many queries makes one
/// iterator and resets it.
template <typename Query>
class ZNGEOM_API OctreeFilterIt
{
public:
    /// Starts the traversal: valid unless the query misses the root.
    OctreeFilterIt(const Octree& octree, const Query& query);
    /// Invalid until `reset`.
    explicit OctreeFilterIt(const Octree& octree);
    OctreeFilterIt(const Octree&&, const Query&) = delete;
    explicit OctreeFilterIt(const Octree&&) = delete;
    OctreeFilterIt(const OctreeFilterIt&) = delete;
    OctreeFilterIt& operator=(const OctreeFilterIt&) = delete;
    ~OctreeFilterIt();

    /// Whether a leaf is current.
    bool valid() const;
    /// Starts anew on the same octree.
    void reset(const Query& query);
    void next();
    /// The current leaf.
    OctreeIterator get() const;

private:
    struct Record;
    std::unique_ptr<Record> m_record;
};

/// Leaves that `intersects(box, frustum)` accepts, near ones first along the view direction.
using OctreeIntersectIt = OctreeFilterIt<Frustum>;
/// Leaves that overlap or touch a box, ordered along x.
using OctreeBBoxIntersectIt = OctreeFilterIt<BoundingBox>;
/// Leaves that a ray meets between the parameters 0 and the largest float, front to back.
using OctreeRayIntersectIt = OctreeFilterIt<Ray>;
/// Leaves that a sphere meets or touches, ordered along x.
using OctreeSphereIntersectIt = OctreeFilterIt<Sphere>;

extern template class OctreeFilterIt<Frustum>;
extern template class OctreeFilterIt<BoundingBox>;
extern template class OctreeFilterIt<Ray>;
extern template class OctreeFilterIt<Sphere>;

/// All leaves of an octree, the highest child first. A value: copies walk on independently.
class ZNGEOM_API OctreeLeafIterator
{
public:
    explicit OctreeLeafIterator(const Octree& octree) { reset(octree); }
    explicit OctreeLeafIterator(const Octree&&) = delete;

    bool valid() const { return !m_stack.empty(); }
    /// Starts on an octree. Only for an exhausted iterator: what is left of an earlier walk stays on the stack and is
    /// delivered after the new one.
    void reset(const Octree& octree);
    void reset(const Octree&&) = delete;
    void next();
    OctreeIterator get() const { return m_stack.back(); }

private:
    void descend();

    zn::vector<OctreeIterator> m_stack;
};

} // namespace znGeom
