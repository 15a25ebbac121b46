/// Reading rays.
#pragma once

#include <string>
#include <vector>

#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct TextRay
{
    znLinear::Point origin;
    znLinear::Vector direction; ///< of unit length
};

/// The rays of a text file or of standard input, "-": on each line the x y z of an origin and of a direction, separated
/// by blanks or commas; "#" starts a comment, and empty lines are skipped. Fails with one line that begins with the
/// path and names the line; numbers are finite, and directions have a length. May be cancelled.
std::vector<TextRay> loadRays(const std::string& path, znUtil::Progress& progress);

} // namespace tool
