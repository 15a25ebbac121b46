/// How sharply a surface is folded.
#pragma once

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// The largest angle between the normals of two triangles that run along a common edge in opposite directions.
///
/// \param sides  built from this mesh by `meshEdgeSides`
/// \return radians: 0 for a flat mesh and for one without such pairs, pi where a triangle is folded back on another
///
/// Triangles without area have no direction and are left out, where `meshMaxDihedralAngle` takes them to face +z; pairs
/// that are wound against each other are left out too, since the angle between their normals is not that of the fold.
/// Linear, but for edges of very many triangles, which count by their square; on all threads.
ZNGEOM_API double meshMaxFoldAngle(const CompactMesh& mesh, const MeshEdgeSides& sides);

} // namespace znGeom
