/// What the colours of a picture mean.
#pragma once

#include "apps/zngeom/picture/canvas.h"
#include "apps/zngeom/picture/marking.h"

namespace tool {

struct LegendEntry
{
    const Marking* marking = nullptr; ///< null for a text alone
    std::string text;
};

/// In pixels, for a picture of a width.
int legendHeight(const std::vector<LegendEntry>& entries, int width);

/// As many lines as the entries need.
void paintLegend(Canvas& canvas, const std::vector<LegendEntry>& entries, const Frame& frame);

} // namespace tool
