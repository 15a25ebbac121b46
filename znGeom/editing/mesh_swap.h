/// Exchanging two meshes.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// Exchanges all content of two meshes, selections included, but not their listeners and allocators. Reports one
/// `TopologyChanged` on each, `a` first. Both name every channel that either of the meshes has, first the vertex
/// attributes that `a` has now, then those of `b`; one that both have is named twice.
///
/// Constant where neither mesh has an allocator, otherwise linear. Runs on the calling thread.
ZNGEOM_API void meshSwap(CompactMesh& a, CompactMesh& b);

} // namespace znGeom
