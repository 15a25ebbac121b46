/// The order in which trees over triangles take the triangles of a mesh.
#pragma once

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/machine/internal/aligned_array.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom::internal {

struct TriangleOrder
{
    int count = 0;   ///< those whose corners are finite; others are left out
    BoundingBox box; ///< around these
    AlignedArray<int> numbers{nullptr, {0}};
};

/// Orders triangles by the middles of their boxes, as `orderByHalving` does.
TriangleOrder orderTriangles(const CompactMesh& mesh, znUtil::ThreadPool& pool);

} // namespace znGeom::internal
