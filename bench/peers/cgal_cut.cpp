// CGAL cuts its half-edge mesh by a plane.
#include "bench/checks.h"
#include "bench/cut.h"
#include "bench/peers/cgal_mesh.h"
#include "bench/suite.h"

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/clip.h>
#include <CGAL/Polygon_mesh_processing/connected_components.h>
#include <CGAL/Polygon_mesh_processing/measure.h>
#include <CGAL/Surface_mesh.h>

#include <cmath>
#include <memory>

namespace {

using bench::Input;
using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;

std::unique_ptr<Mesh> build(const bench::Soup& soup)
{
    auto mesh = std::make_unique<Mesh>();
    bench::addSoup(soup, *mesh);
    return mesh;
}

std::unique_ptr<Mesh> split(std::unique_ptr<Mesh>& mesh)
{
    using bench::cutNormal, bench::cutPoint;
    const Kernel::Point_3 point(cutPoint[0], cutPoint[1], cutPoint[2]);
    const Kernel::Vector_3 normal(cutNormal[0], cutNormal[1], cutNormal[2]);
    CGAL::Polygon_mesh_processing::split(*mesh, Kernel::Plane_3(point, normal));
    return std::move(mesh);
}

bool agrees(const Input& input)
{
    auto mesh = build(input.soup());
    mesh = split(mesh);
    const auto piece = mesh->add_property_map<Mesh::Face_index, std::size_t>("f:piece", 0).first;
    const auto numPieces = CGAL::Polygon_mesh_processing::connected_components(*mesh, piece);
    const double area = bench::areaOf(input.soup());
    return static_cast<int>(numPieces) > bench::components(input.soup()) &&
           std::fabs(CGAL::Polygon_mesh_processing::area(*mesh) - area) < 1e-6 * area;
}

void run(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return build(input.soup()); }, split);
}

[[maybe_unused]] const bool listed = bench::measure({"cut", "CGAL", agrees, run, 3, bench::generatedInputs()});

} // namespace
