/// Showing what is wrong with a mesh.
#pragma once

#include "apps/zngeom/defects/mesh_defects.h"
#include "apps/zngeom/picture/marking.h"

namespace tool {

/// A marking for each kind of defect that was found, and the boundary; a word that nothing was found otherwise.
/// \param mesh     must outlive the scene
/// \param defects  of this mesh
Scene sceneOf(const znGeom::CompactMesh& mesh, const MeshDefects& defects);

} // namespace tool
