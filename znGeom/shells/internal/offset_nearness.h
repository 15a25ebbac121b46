/// Which points lie nearer to the vertices of a mesh than a distance.
#pragma once

#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom::internal {

/// \param octree    over the vertices
/// \param points    one for each vertex, best near it
/// \param distance  of any sign
/// \return for each point whether a vertex is nearer by more than rounding. False for a point that is not finite
///
/// A search ends with the first such vertex, on all threads of the pool. Prints the line of `meshClosestVertex2` for
/// each point.
BitVector findTooClose(const Octree& octree, const zn::vector<znLinear::Point>& points, double distance,
                       znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

} // namespace znGeom::internal
