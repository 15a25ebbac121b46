/// Meshes whose triangle corners have texture coordinates or normals of their own, with all of it at the vertices.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// The positions and triangles of a mesh, with a further vertex for each texture coordinates and normal beyond the
/// first that corners have at a vertex. Vertices keep their numbers; further ones follow, in the order of the corners.
///
/// \param cornerUVs, cornerNormals  per triangle corner; where one is null, the channel of the mesh is taken, if it has
///                                  one
znGeom::CompactMesh splitCorners(const znGeom::CompactMesh& mesh, const znGeom::MeshUV* cornerUVs,
                                 const znGeom::MeshNormal* cornerNormals);

} // namespace tool
