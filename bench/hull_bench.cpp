// Hulls of points in the plane, and the smallest rectangles around them.
#include "bench/hull.h"
#include "bench/suite.h"
#include "znGeom/planar/shapes/convex_hull.h"
#include "znGeom/planar/shapes/min_area_bound.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace bench {

namespace {

std::vector<PlanePoint> makePoints(Spread2d spread)
{
    constexpr std::size_t numPoints = 1000000;
    std::mt19937_64 random(1);
    const auto coordinate = [&random] { return static_cast<double>(random() >> 11) * 0x1p-52 - 1; };
    std::vector<PlanePoint> points;
    points.reserve(numPoints);
    while (points.size() < numPoints) {
        const double x = coordinate(), y = coordinate(), angle = 3.14159265358979323846 * x;
        if (spread == Spread2d::disk && x * x + y * y > 1) continue;
        points.push_back(spread == Spread2d::circle ? PlanePoint{std::cos(angle), std::sin(angle)} : PlanePoint{x, y});
    }
    return points;
}

double cross(const PlanePoint& from, const PlanePoint& a, const PlanePoint& b)
{
    return (a[0] - from[0]) * (b[1] - from[1]) - (a[1] - from[1]) * (b[0] - from[0]);
}

/// The plainest scan: everything sorted from left to right, then both sides.
std::vector<PlanePoint> plainHull(std::vector<PlanePoint> points)
{
    std::sort(points.begin(), points.end());
    std::vector<PlanePoint> hull;
    for (int side = 0; side < 2; ++side) {
        const std::size_t start = hull.size();
        for (const PlanePoint& p : points) {
            while (hull.size() > start + 1 && !(cross(hull[hull.size() - 2], hull.back(), p) > 0)) hull.pop_back();
            hull.push_back(p);
        }
        hull.pop_back();
        std::reverse(points.begin(), points.end());
    }
    return hull;
}

/// The smallest area over all directions along a hull, each looked at alone.
double plainSmallestArea(const std::vector<PlanePoint>& hull)
{
    double smallest = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < hull.size(); ++i) {
        const PlanePoint &start = hull[i], &end = hull[(i + 1) % hull.size()];
        const double dx = end[0] - start[0], dy = end[1] - start[1];
        double left = 0, right = 0, high = 0;
        for (const PlanePoint& p : hull) {
            const double along = dx * (p[0] - start[0]) + dy * (p[1] - start[1]);
            left = std::min(left, along), right = std::max(right, along);
            high = std::max(high, cross(start, end, p));
        }
        smallest = std::min(smallest, (right - left) * high / (dx * dx + dy * dy));
    }
    return smallest;
}

} // namespace

const std::vector<PlanePoint>& planePoints(Spread2d spread)
{
    static std::vector<PlanePoint> made[3];
    std::vector<PlanePoint>& points = made[static_cast<int>(spread)];
    if (points.empty()) points = makePoints(spread);
    return points;
}

bool isHull(Spread2d spread, std::vector<PlanePoint> corners)
{
    const std::vector<PlanePoint> expected = plainHull(planePoints(spread));
    std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
    return corners == expected;
}

bool isSmallestRectangle(Spread2d spread, double area)
{
    static double expected[3] = {};
    double& smallest = expected[static_cast<int>(spread)];
    if (smallest == 0) smallest = plainSmallestArea(plainHull(planePoints(spread)));
    return std::fabs(area - smallest) < 1e-12;
}

} // namespace bench

namespace {

using bench::Spread2d;
using Points = zn::vector<znLinear::Point2>;

Points pointsOf(Spread2d spread)
{
    Points points;
    for (const auto& [x, y] : bench::planePoints(spread)) points.append({x, y});
    return points;
}

template <Spread2d spread>
void makeHull(benchmark::State& state)
{
    const Points points = pointsOf(spread);
    Points hull;
    znGeom::convexHull2d(points, hull);
    std::vector<bench::PlanePoint> corners;
    for (const znLinear::Point2& corner : hull) corners.push_back({corner.x, corner.y});
    if (!bench::isHull(spread, corners)) return state.SkipWithError("the hull is another one");
    state.counters["corners"] = hull.size();
    bench::timeWork(
        state, [&] { return &points; },
        [](const Points* given) {
            Points made;
            znGeom::convexHull2d(*given, made);
            return made;
        });
}

template <Spread2d spread>
void makeRectangle(benchmark::State& state)
{
    const Points points = pointsOf(spread);
    const auto make = [](const Points* given) {
        znGeom::Rect2 rect;
        znGeom::minAreaRect2d(*given, rect);
        return rect;
    };
    const znGeom::Rect2 rect = make(&points);
    const double area = znLinear::cross(rect.c1 - rect.c0, rect.c2 - rect.c0);
    if (!bench::isSmallestRectangle(spread, area)) return state.SkipWithError("the rectangle is another one");
    bench::timeWork(
        state, [&] { return &points; }, make);
}

[[maybe_unused]] const bool listed =
    bench::measureAlone("hull_disk", "znGeom", makeHull<Spread2d::disk>, 10) &&
    bench::measureAlone("hull_square", "znGeom", makeHull<Spread2d::square>, 10) &&
    bench::measureAlone("hull_circle", "znGeom", makeHull<Spread2d::circle>, 3) &&
    bench::measureAlone("rectangle_disk", "znGeom", makeRectangle<Spread2d::disk>, 10) &&
    bench::measureAlone("rectangle_square", "znGeom", makeRectangle<Spread2d::square>, 10);

} // namespace
