/// The volume that a surface encloses.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// The volume inside a mesh, in the cube of its units; negative where the mesh is inside out. Closed parts are added
/// up, whether or not they overlap.
///
/// It is meaningful only where the surface is closed and consistently wound, which `meshCountEdges` reports. For any
/// other surface this is the sum of the cones from the first corner of the first triangle to all triangles. 0 without
/// triangles; not finite where a corner isn't.
///
/// Measured from that corner and in `double`, so that a mesh far from the origin loses no digits. Linear; on the
/// calling thread, the same in every run.
ZNGEOM_API double meshVolume(const CompactMesh& mesh);

} // namespace znGeom
