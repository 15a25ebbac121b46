/// Telling what is wrong with a mesh.
#pragma once

#include "apps/zngeom/defects/mesh_defects.h"
#include "apps/zngeom/frame/report.h"

namespace tool {

/// Programs get all kinds of defects with all their numbers; null for what was not looked for. People get all kinds or
/// those that were found, with the places of the first few.
enum class Kinds { All, Found };

/// \param defects  of this mesh
void addDefects(const znGeom::CompactMesh& mesh, const MeshDefects& defects, Kinds kinds, Report& report);

} // namespace tool
