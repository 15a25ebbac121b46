/// The readers of the mesh formats, on files or on text in memory. They fill the mesh and notify nobody.
#pragma once

#include "znGeom/files/internal/text_file.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

void parsePlain(TextReader& text, CompactMesh& mesh);
/// Adds to the mesh; twins as `allocFace` finds them.
void parsePlain(TextReader& text, TopoMesh& mesh);
void parseObj(TextReader& text, CompactMesh& mesh);

} // namespace znGeom::internal
