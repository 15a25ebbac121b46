// CGAL's hulls of points in the plane over plain doubles, by the algorithm that it takes of its own accord and by one
// that is faster on some inputs, and its smallest rectangle around a hull.
#include "bench/hull.h"
#include "bench/suite.h"

#include <CGAL/Polygon_2.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/ch_bykat.h>
#include <CGAL/convex_hull_2.h>
#include <CGAL/min_quadrilateral_2.h>

#include <cmath>
#include <iterator>

namespace {

using bench::Spread2d;
using Kernel = CGAL::Simple_cartesian<double>;
using Points = std::vector<Kernel::Point_2>;

Points pointsOf(Spread2d spread)
{
    Points points;
    for (const auto& [x, y] : bench::planePoints(spread)) points.emplace_back(x, y);
    return points;
}

Points usualHull(const Points* points)
{
    Points hull;
    CGAL::convex_hull_2(points->begin(), points->end(), std::back_inserter(hull));
    return hull;
}

Points bykatHull(const Points* points)
{
    Points hull;
    CGAL::ch_bykat(points->begin(), points->end(), std::back_inserter(hull));
    return hull;
}

template <Spread2d spread, Points makeHull(const Points*)>
void runHull(benchmark::State& state)
{
    const Points points = pointsOf(spread);
    std::vector<bench::PlanePoint> corners;
    for (const Kernel::Point_2& corner : makeHull(&points)) corners.push_back({corner.x(), corner.y()});
    if (!bench::isHull(spread, corners)) return state.SkipWithError("the hull is another one");
    bench::timeWork(
        state, [&] { return &points; }, makeHull);
}

template <Spread2d spread, Points makeHull(const Points*)>
void runRectangle(benchmark::State& state)
{
    const Points points = pointsOf(spread);
    const auto make = [](const Points* given) {
        const Points hull = makeHull(given);
        CGAL::Polygon_2<Kernel> rectangle;
        CGAL::min_rectangle_2(hull.begin(), hull.end(), std::back_inserter(rectangle));
        return rectangle;
    };
    if (!bench::isSmallestRectangle(spread, std::fabs(make(&points).area())))
        return state.SkipWithError("the rectangle is another one");
    bench::timeWork(
        state, [&] { return &points; }, make);
}

[[maybe_unused]] const bool listed =
    bench::measureAlone("hull_disk", "CGAL", runHull<Spread2d::disk, usualHull>, 3) &&
    bench::measureAlone("hull_disk", "CGAL_bykat", runHull<Spread2d::disk, bykatHull>, 3) &&
    bench::measureAlone("hull_square", "CGAL", runHull<Spread2d::square, usualHull>, 3) &&
    bench::measureAlone("hull_square", "CGAL_bykat", runHull<Spread2d::square, bykatHull>, 3) &&
    bench::measureAlone("hull_circle", "CGAL", runHull<Spread2d::circle, usualHull>, 3) &&
    bench::measureAlone("rectangle_disk", "CGAL_bykat", runRectangle<Spread2d::disk, bykatHull>, 3) &&
    bench::measureAlone("rectangle_square", "CGAL_bykat", runRectangle<Spread2d::square, bykatHull>, 3);

} // namespace
