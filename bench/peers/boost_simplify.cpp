// Boost.Geometry's simplification of lines, after Douglas and Peucker: from the whole line to its parts.
#include "bench/polyline.h"
#include "bench/suite.h"

#include <boost/geometry.hpp>

namespace {

using Point = boost::geometry::model::d2::point_xy<double>;
using Line = boost::geometry::model::linestring<Point>;

void runSimplification(benchmark::State& state)
{
    Line line;
    for (const auto& [x, y] : bench::noisyWave()) line.emplace_back(x, y);
    std::size_t kept = 0;
    bench::timeWork(
        state, [&] { return &line; },
        [&](const Line* subject) {
            Line result;
            boost::geometry::simplify(*subject, result, bench::decimationTolerance);
            return kept = result.size();
        });
    state.counters["kept"] = static_cast<double>(kept);
}

[[maybe_unused]] const bool listed = bench::measureAlone("decimate", "Boost", runSimplification, 1, 5);

} // namespace
