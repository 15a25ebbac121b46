/// Partitions on a pool of the caller's choice.
#pragma once

#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/octree_partition.h"

namespace znGeom::internal {

ZNGEOM_API void computeOctreeTris(const CompactMesh& mesh, const Octree& octree, OctreeTris& result,
                                  znUtil::ThreadPool& pool);
ZNGEOM_API void meshOctreeLines(const CompactMesh& mesh, const Octree& octree, OctreeLines& result,
                                znUtil::ThreadPool& pool);

} // namespace znGeom::internal
