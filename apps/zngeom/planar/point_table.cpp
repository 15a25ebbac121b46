#include "apps/zngeom/planar/point_table.h"

#include <algorithm>
#include <cmath>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/text_lines.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/report.h"

namespace tool {

std::vector<znLinear::Point2Flt> loadSamples(const std::string& path, znUtil::Progress& progress)
{
    const std::vector<double> numbers = loadRows(path, 2, "a sample", "samples", progress);
    if (numbers.size() < 4) throw Failure(inputName(path) + ": has one sample, and two are needed");
    // Squares of differences stay within a float.
    if (std::any_of(numbers.begin(), numbers.end(), [](double value) { return std::fabs(value) > 1e18; }))
        throw Failure(inputName(path) + ": has a number that is too large to compute with");
    std::vector<znLinear::Point2Flt> samples;
    for (std::size_t i = 0; i < numbers.size(); i += 2)
        samples.push_back(znLinear::Point2Flt(znLinear::Point2(numbers[i], numbers[i + 1])));
    return samples;
}

znLinear::Point2 shortest(const znLinear::Point2Flt& point) { return {shortest(point.x), shortest(point.y)}; }

std::vector<znLinear::Point2> shortest(const std::vector<znLinear::Point2Flt>& points)
{
    std::vector<znLinear::Point2> others;
    for (const znLinear::Point2Flt& point : points) others.push_back(shortest(point));
    return others;
}

} // namespace tool
