/// What the colours of a picture mean.
#pragma once

#include "apps/zngeom/picture/canvas.h"
#include "apps/zngeom/picture/marking.h"

namespace tool {

/// In pixels, for a picture of a width.
int legendHeight(const Scene& scene, int width);

/// One entry for each marking, in as many lines as they need.
void paintLegend(Canvas& canvas, const Scene& scene, const Frame& frame);

} // namespace tool
