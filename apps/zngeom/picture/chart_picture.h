/// Pictures of charts.
#pragma once

#include <string>

#include "apps/zngeom/picture/canvas.h"
#include "apps/zngeom/picture/mesh_picture.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// Draws a mesh under a checkerboard, and beside it the chart from which the board comes: the texture coordinates of
/// the vertices. The borders of the mesh are lines in both; triangles that are turned over in the chart are red.
///
/// \param remark  for the legend; small letters
Image drawChart(const znGeom::CompactMesh& mesh, const std::string& remark, const PictureSize& size);

} // namespace tool
