/// Pictures of values on surfaces.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/picture/mesh_picture.h"
#include "apps/zngeom/picture/value_scale.h"

namespace tool {

/// Draws a mesh in the colours of the values at its vertices, from where much of its front is seen, with the scale at
/// the foot.
/// \param title  small letters
Image drawValues(const znGeom::CompactMesh& mesh, const std::vector<float>& values, const ValueScale& scale,
                 const std::string& title, const PictureSize& size);

} // namespace tool
