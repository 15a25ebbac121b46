/// Painting on a picture.
#pragma once

#include <vector>

#include "apps/zngeom/picture/canvas.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// Paints round dabs with smooth edges, in pixels from the upper left corner. Where they overlap there is no more
/// colour than of one. May be cancelled. \return how many of them touch the picture
std::size_t paintDabs(Image& image, const std::vector<znLinear::Point2Flt>& places, double radius, const Colour& colour,
                      znUtil::Progress& progress);

} // namespace tool
