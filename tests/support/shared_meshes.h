/// The folder of real meshes beside the checkout, which is not part of it.
#pragma once

#include <functional>

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znTest {

/// Visits each mesh up to a size, welded and without normals, its name in the trace; under a sanitizer the small ones
/// only. \return false when there is no such folder
bool forEachSharedMesh(int mostTriangles, const std::function<void(const znGeom::CompactMesh&)>& visit);

} // namespace znTest
