/// Tables of rectangles.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct RectangleTable
{
    std::vector<znLinear::Point2> sizes;
    std::vector<std::string> names; ///< empty where a line has none
};

/// Reads a width and a height on each line, neither below 0, and perhaps a name behind them; empty lines are skipped.
///
/// Fails with one line that begins with the path and names the line; also for a table without rectangles. "-" is
/// standard input. May be cancelled.
RectangleTable loadRectangles(const std::string& path, znUtil::Progress& progress);

/// The same of a text in memory; a failure begins with the line.
RectangleTable parseRectangles(std::string_view text, znUtil::Progress& progress);

/// x, y, width and height on each line, with the name if there is one, and commas between them.
std::string placesAsText(const std::vector<znLinear::Range2d>& places, const std::vector<std::string>& names);

} // namespace tool
