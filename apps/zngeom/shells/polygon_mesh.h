/// What the commands that edit polygons have in common.
#pragma once

#include <string>

#include "apps/zngeom/files/loaded_mesh.h"
#include "apps/zngeom/picture/marking.h"
#include "znGeom/topology/topo_mesh.h"

namespace tool {

/// The faces of a mesh as they stood in its file, and their vertices. What doesn't follow them goes, with notes.
/// \param work  "the subdivision"
void takePolygons(LoadedMesh& loaded, const std::string& work, znGeom::TopoMesh& result);

/// Makes a mesh the vertices and faces of a half-edge mesh; polygons are written as such where the format has them.
/// \param reversed  as for `znGeom::meshConvertPolygons`
void putPolygons(const znGeom::TopoMesh& mesh, LoadedMesh& loaded, const zn::vector<bool>& reversed = {});

/// A mesh with the numbers of its vertices and faces in the legend.
Scene sceneOfFaces(const znGeom::CompactMesh& mesh);

/// The number of its faces: of the polygons, or of the triangles where it has no polygons.
int countFaces(const znGeom::CompactMesh& mesh);

} // namespace tool
