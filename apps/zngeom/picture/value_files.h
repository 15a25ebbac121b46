/// Files of values at vertices.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/picture/value_scale.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// Checks, before any work is done, that values can be written to this path; fails if not.
void checkValueFormat(const std::string& path);

/// Writes a PLY file with the positions, the values and their colours at the vertices, and the triangles; or, for .txt
/// and standard output, a text with a value on each line. Values that are not finite are written as nan and inf. Fails
/// with one line that begins with the path. Returns the number of bytes.
std::size_t saveValues(const znGeom::CompactMesh& mesh, const std::vector<float>& values, const ValueScale& scale,
                       const std::string& path);

} // namespace tool
