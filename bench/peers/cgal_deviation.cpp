// CGAL's largest distance of points from a mesh, on all threads; makes its tree each time.
#include "bench/deviation.h"
#include "bench/peers/cgal_mesh.h"

#include <CGAL/Polygon_mesh_processing/distance.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

#include <cmath>
#include <vector>

namespace {

using bench::Input;
using Kernel = CGAL::Simple_cartesian<double>;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;

Kernel::Point_3 pointAt(const float* p) { return {double(p[0]), double(p[1]), double(p[2])}; }

Mesh meshOf(const bench::Soup& soup)
{
    Mesh mesh;
    bench::addSoup(soup, mesh);
    return mesh;
}

std::vector<Kernel::Point_3> pointsOf(const bench::Soup& soup)
{
    const std::vector<float> moved = bench::movedVertices(soup);
    std::vector<Kernel::Point_3> points;
    for (std::size_t i = 0; i < moved.size(); i += 3) points.push_back(pointAt(&moved[i]));
    return points;
}

double largestDistance(const std::vector<Kernel::Point_3>& points, const Mesh& mesh)
{
    return CGAL::Polygon_mesh_processing::max_distance_to_triangle_mesh<CGAL::Parallel_if_available_tag>(points, mesh);
}

[[maybe_unused]] const bool listed = bench::measure(
    {"deviation_made", "CGAL",
     [](const Input& input) {
         // Scaled and moved, most of a torus is away by a few hundredths of the diagonal.
         const double distance = largestDistance(pointsOf(input.soup()), meshOf(input.soup()));
         const double part = distance / bench::boxOf(input.soup()).diagonal();
         return part > 0.005 && part < 0.05;
     },
     [](benchmark::State& state, const Input& input) {
         const Mesh mesh = meshOf(input.soup());
         const auto points = pointsOf(input.soup());
         bench::timeWork(
             state, [&] { return &points; },
             [&](const std::vector<Kernel::Point_3>* subject) { return largestDistance(*subject, mesh); });
     },
     2, bench::generatedInputs()});

} // namespace
