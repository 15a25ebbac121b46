/// Keeping the triangle list of a `CompactMesh`.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// Makes triangles from the polygon description: for each polygon of three corners or more the fan around its first
/// corner; polygons of fewer corners give nothing. A mesh that has triangles already, or has no polygons, stays as it
/// is. The polygons stay. Vertex channels remain valid; one `TopologyChanged` is sent if there is a triangle.
///
/// \param remap  replaced: from each new triangle to its polygon; unchanged when nothing is done
///
/// Linear; runs on the calling thread.
ZNGEOM_API void meshTriangulate(CompactMesh& mesh);
ZNGEOM_API void meshTriangulate(CompactMesh& mesh, Remap& remap);

} // namespace znGeom
