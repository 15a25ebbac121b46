// CGAL's simplification of polylines by squared distance: it keeps the topology of all lines in a triangulation, too.
#include "bench/polyline.h"
#include "bench/suite.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Constrained_triangulation_plus_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polyline_simplification_2/Squared_distance_cost.h>
#include <CGAL/Polyline_simplification_2/simplify.h>

#include <iterator>

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Points = std::vector<Kernel::Point_2>;

void runSimplification(benchmark::State& state)
{
    Points points;
    for (const auto& [x, y] : bench::noisyWave()) points.emplace_back(x, y);
    std::size_t kept = 0;
    bench::timeWork(
        state, [&] { return &points; },
        [&](const Points* subject) {
            namespace simplification = CGAL::Polyline_simplification_2;
            constexpr double most = bench::decimationTolerance * bench::decimationTolerance;
            Points result;
            simplification::simplify(subject->begin(), subject->end(), simplification::Squared_distance_cost(),
                                     simplification::Stop_above_cost_threshold(most), std::back_inserter(result),
                                     false);
            return kept = result.size();
        });
    state.counters["kept"] = static_cast<double>(kept);
}

[[maybe_unused]] const bool listed = bench::measureAlone("decimate", "CGAL", runSimplification, 1, 2);

} // namespace
