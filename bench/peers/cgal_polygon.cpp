// CGAL's triangulation of a loop of points: the cubic algorithm over all chords, without the shortcut of looking only
// at the edges of a Delaunay triangulation.
#include "bench/polygon.h"
#include "bench/suite.h"

#include <CGAL/Polygon_mesh_processing/triangulate_hole.h>
#include <CGAL/Simple_cartesian.h>

#include <array>
#include <vector>

namespace {

using Point = CGAL::Simple_cartesian<double>::Point_3;
using Points = std::vector<Point>;

std::vector<int> triangulate(const Points& loop)
{
    // It writes any type that can be made from three numbers.
    struct Triangle
    {
        std::array<int, 3> corners;
        Triangle(int a, int b, int c) : corners{a, b, c} {}
    };
    std::vector<Triangle> triangles;
    CGAL::Polygon_mesh_processing::triangulate_hole_polyline(loop, std::back_inserter(triangles),
                                                             CGAL::parameters::use_delaunay_triangulation(false));
    std::vector<int> result;
    for (const Triangle& triangle : triangles)
        result.insert(result.end(), triangle.corners.begin(), triangle.corners.end());
    return result;
}

void runTriangulation(benchmark::State& state)
{
    Points loop;
    for (const auto& [x, y, z] : bench::noisyLoop()) loop.emplace_back(x, y, z);
    std::vector<int> triangles;
    bench::timeWork(
        state, [&] { return &loop; },
        [&](const Points* given) {
            triangles = triangulate(*given);
            return triangles.size();
        });
    // Looked at afterwards: once is long enough.
    if (!bench::closesLoop(static_cast<int>(loop.size()), triangles))
        state.SkipWithError("the result does not close the loop");
}

[[maybe_unused]] const bool listed = bench::measureAlone("triangulate_polygon", "CGAL", runTriangulation, 1, 1);

} // namespace
