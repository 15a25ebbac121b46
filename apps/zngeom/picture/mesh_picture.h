/// Pictures of meshes.
#pragma once

#include "apps/zngeom/picture/canvas.h"
#include "apps/zngeom/picture/marking.h"

namespace tool {

struct PictureSize
{
    int width = 1280, height = 800;
};

/// Draws a mesh with its markings from a place where they are seen, from a second one if that shows more, and a part
/// of it from nearby where they are small; with a legend.
Image drawMesh(const Scene& scene, const PictureSize& size);

/// Draws a mesh with its markings, and beside it what has become of it, from the same place.
Image drawChange(const Scene& before, const Scene& after, const PictureSize& size);

} // namespace tool
