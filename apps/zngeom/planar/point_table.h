/// Tables of points in the plane.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/frame/number_text.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// What is said to read here is what `loadSamples` accepts.
constexpr const char* sampleRules =
    "A text has the x y of a sample on each line, divided by blanks or commas; # starts a comment, - is standard\n"
    "input. Numbers are taken in the precision of a float.";

/// Two samples or more, up to 1e18 from zero. Fails with one line that begins with the path. May be cancelled.
std::vector<znLinear::Point2Flt> loadSamples(const std::string& path, znUtil::Progress& progress);

/// One line for each point, with commas where the path ends in .csv.
template <typename T>
std::string tableOf(const std::vector<znLinear::Point2T<T>>& points, const std::string& path)
{
    std::string text;
    for (const auto& point : points) {
        appendAllDigits(text, point.x);
        text += path.ends_with(".csv") ? ',' : ' ';
        appendAllDigits(text, point.y);
        text += '\n';
    }
    return text;
}

/// The point in as many decimal digits as a `float` needs.
znLinear::Point2 shortest(const znLinear::Point2Flt& point);
std::vector<znLinear::Point2> shortest(const std::vector<znLinear::Point2Flt>& points);

} // namespace tool
