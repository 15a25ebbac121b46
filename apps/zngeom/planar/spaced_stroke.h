/// A stroke smoothed, and points at a fixed spacing along it.
#pragma once

#include <vector>

#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct StrokeOptions
{
    double spacing = 0; ///< above 0
    bool isSmooth = false;
    int numSteps = 6;
    double mass = 0.9, drag = 0.921;
};

struct SpacedStroke
{
    std::vector<znLinear::Point2Flt> smoothed; ///< empty for a stroke that is not smoothed
    std::vector<znLinear::Point2Flt> points;
};

/// Fails where there are too many points, and where the filter swings ever further. May be cancelled.
SpacedStroke spaceStroke(const std::vector<znLinear::Point2Flt>& samples, const StrokeOptions& options,
                         znUtil::Progress& progress);

/// The length of a polyline.
double lengthOf(const std::vector<znLinear::Point2Flt>& points);

} // namespace tool
