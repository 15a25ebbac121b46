/// Surface area of meshes and placements, in space and in texture coordinates.
///
/// Channel 0 measures the surface in space, 2 and 3 measure it in the plane of the UVs and STs. For any other channel,
/// and for a texture channel that the mesh does not have, the area is 0. All run on the threads of the process-wide
/// pool, linear in triangles; each thread adds up its slice in `double`, so that the last bits depend on the number of
/// threads until they are rounded to `float`.
#pragma once

#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// The area of a mesh as it stands.
ZNGEOM_API float meshArea(const CompactMesh& mesh, MeshChannel channel);

/// The area of a placed mesh; 0 without a mesh. Texture areas ignore the placement's matrix.
ZNGEOM_API float meshArea(const MeshPlacement& placement, MeshChannel channel);

/// The area of an arrangement, and each placement's part in it.
///
/// \param fractions  replaced: for each placement its area divided by the total, or, where the total is below
///                   `epsilonTolFlt`, the area itself; empty for a channel that has no area
/// \return the total; 0 where it is below `epsilonTolFlt`
ZNGEOM_API float meshArea(const zn::list<MeshPlacement>& placements, MeshChannel channel, zn::vector<float>& fractions);

/// Finds the placements that mirror: those whose matrix has a negative determinant. The winding of their triangles is
/// to be reversed when an arrangement becomes one mesh.
///
/// \param mirrored  replaced: one entry per placement
ZNGEOM_API void testDeterminants(const zn::list<MeshPlacement>& placements, zn::vector<bool>& mirrored);

} // namespace znGeom
