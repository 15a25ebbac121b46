/// Rings around what is too small to be seen.
#pragma once

#include "apps/zngeom/picture/marking.h"
#include "apps/zngeom/picture/view.h"

namespace tool {

/// Draws a ring around the triangles and lines of a marking that are small in the picture and far from others of it, in
/// front of everything.
void paintRings(Canvas& canvas, const View& view, const Frame& frame, const znGeom::CompactMesh& mesh,
                const Marking& marking);

} // namespace tool
