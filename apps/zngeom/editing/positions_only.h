/// What commands that make new triangles have in common.
#pragma once

#include <string>

#include "apps/zngeom/files/loaded_mesh.h"

namespace tool {

/// Takes from a mesh what would not follow its triangles, with a note for each: normals, texture coordinates and
/// groups. The polygons go without one, since only triangles are written. \param work  "the reduction"
void keepPositionsOnly(LoadedMesh& loaded, const std::string& work);

} // namespace tool
