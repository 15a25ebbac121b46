/// Reading glTF.
#pragma once

#include <string>
#include <string_view>

#include "apps/zngeom/files/loaded_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// glTF, text and binary, in memory: all meshes of the scene, placed where its nodes put them, in one mesh, with the
/// vertices of the file in their order, one copy for each placement. Accepts no other format, and keeps no more than a
/// multiple of the file's size. Fails with one line; may be cancelled.
/// \param folder  where files with its buffers may be; empty when there is none
/// \param result  its mesh must be empty
void readGltf(std::string_view file, const std::string& folder, znUtil::Progress& progress, LoadedMesh& result);

} // namespace tool
