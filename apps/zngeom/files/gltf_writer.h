/// Writing glTF.
#pragma once

#include "znGeom/files/mesh_save.h"

namespace tool {

/// One binary file of one mesh, with normals and texture coordinates; a mesh without triangles becomes points. Fails
/// with one line for what the format has no place for: no vertices, and coordinates that are not finite. May be
/// cancelled. Returns the number of bytes; if the writer took fewer, it is up to the caller to notice.
std::size_t writeGlb(const znGeom::CompactMesh& mesh, const znGeom::MeshByteWriter& write, znUtil::Progress& progress);

} // namespace tool
