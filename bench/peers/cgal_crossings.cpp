// CGAL's search for triangles that cross, within a mesh and between two. It takes what touches for a crossing, and
// looks at triangles that share a vertex as well: where its list has more, the rest must be of these kinds.
#include "bench/crossings.h"
#include "bench/peers/cgal_mesh.h"
#include "bench/suite.h"

#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/corefinement.h>
#include <CGAL/Polygon_mesh_processing/intersection.h>
#include <CGAL/Polygon_mesh_processing/self_intersections.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <memory>

namespace {

namespace PMP = CGAL::Polygon_mesh_processing;
using bench::Crossings;
using bench::Input;
using bench::Soup;

template <class Kernel>
using Mesh = CGAL::Surface_mesh<typename Kernel::Point_3>;
using Robust = CGAL::Exact_predicates_inexact_constructions_kernel;
using Plain = CGAL::Simple_cartesian<double>;
using Exact = CGAL::Exact_predicates_exact_constructions_kernel;

template <class Kernel>
std::unique_ptr<Mesh<Kernel>> build(const Soup& soup)
{
    auto mesh = std::make_unique<Mesh<Kernel>>();
    bench::addSoup(soup, *mesh);
    return mesh;
}

template <class Kernel>
auto crossings(const Mesh<Kernel>& mesh)
{
    using Face = typename Mesh<Kernel>::Face_index;
    std::vector<std::pair<Face, Face>> pairs;
    PMP::self_intersections(mesh, std::back_inserter(pairs));
    return pairs;
}

bool shareVertex(const Soup& soup, int a, int b)
{
    const int* first = &soup.triangles[3 * static_cast<std::size_t>(a)];
    const int* second = &soup.triangles[3 * static_cast<std::size_t>(b)];
    return std::any_of(first, first + 3, [&](int v) { return std::find(second, second + 3, v) != second + 3; });
}

/// Whether two triangles have a segment of some length in common and lie in different planes.
bool trulyCross(const Soup& soup, int a, int b)
{
    const auto triangle = [&soup](int number) {
        std::array<Exact::Point_3, 3> corners;
        for (std::size_t i = 0; i < 3; ++i) {
            const float* at =
                &soup.positions[3 * static_cast<std::size_t>(soup.triangles[3 * static_cast<std::size_t>(number) + i])];
            corners[i] =
                Exact::Point_3(static_cast<double>(at[0]), static_cast<double>(at[1]), static_cast<double>(at[2]));
        }
        return Exact::Triangle_3(corners[0], corners[1], corners[2]);
    };
    const Exact::Triangle_3 first = triangle(a), second = triangle(b);
    if (first.is_degenerate() || second.is_degenerate()) return false;
    const auto common = CGAL::intersection(first, second);
    const Exact::Segment_3* segment = common ? boost::get<Exact::Segment_3>(&*common) : nullptr;
    if (!segment) return false;
    const double size = bench::boxOf(soup).diagonal();
    return std::sqrt(CGAL::to_double(segment->squared_length())) > 1e-12 * size;
}

/// Whether the library's list has the crossings of CGAL's that are some, and no others.
bool sameCrossings(const Soup& soup, Crossings theirs)
{
    std::sort(theirs.begin(), theirs.end());
    const Crossings ours = bench::crossingsWithin(soup);
    Crossings onlyOurs, onlyTheirs;
    std::set_difference(ours.begin(), ours.end(), theirs.begin(), theirs.end(), std::back_inserter(onlyOurs));
    std::set_difference(theirs.begin(), theirs.end(), ours.begin(), ours.end(), std::back_inserter(onlyTheirs));
    int numMissed = 0;
    for (const auto& [a, b] : onlyTheirs) numMissed += !shareVertex(soup, a, b) && trulyCross(soup, a, b);
    if (!onlyOurs.empty() || numMissed > 0)
        std::fprintf(stderr, "crossings: %zu in both lists, %zu in ours alone, %d missed\n",
                     ours.size() - onlyOurs.size(), onlyOurs.size(), numMissed);
    return onlyOurs.empty() && numMissed == 0;
}

Crossings listOf(const Soup& soup)
{
    const auto mesh = build<Robust>(soup);
    Crossings result;
    for (const auto& [a, b] : crossings<Robust>(*mesh))
        result.emplace_back(std::max(int(a), int(b)), std::min(int(a), int(b)));
    return result;
}

/// Where it can't build the mesh as it is, its numbers are others.
bool isBuilt(const Soup& soup)
{
    return static_cast<int>(build<Robust>(soup)->number_of_faces()) == soup.numTriangles();
}

bool cleanAgrees(const Input& input)
{
    return isBuilt(input.soup()) && sameCrossings(input.soup(), listOf(input.soup()));
}

bool overlappingAgrees(const Input& input)
{
    const Soup both = bench::overlapping(input.soup());
    return isBuilt(both) && sameCrossings(both, listOf(both));
}

template <class Kernel>
void runWithin(benchmark::State& state, const Soup& soup)
{
    const auto mesh = build<Kernel>(soup);
    bench::timeWork(
        state, [&] { return mesh.get(); }, [](const Mesh<Kernel>* subject) { return crossings<Kernel>(*subject); });
}

template <class Kernel>
void runClean(benchmark::State& state, const Input& input)
{
    runWithin<Kernel>(state, input.soup());
}

template <class Kernel>
void runOverlapping(benchmark::State& state, const Input& input)
{
    runWithin<Kernel>(state, bench::overlapping(input.soup()));
}

void runMoved(benchmark::State& state, const Input& input)
{
    const Soup other = bench::moved(input.soup());
    std::unique_ptr<Mesh<Robust>> first, second;
    bench::timeWork(
        state,
        [&] {
            // It marks what it works on.
            first = build<Robust>(input.soup());
            second = build<Robust>(other);
            return 0;
        },
        [&](int) {
            std::vector<std::vector<Robust::Point_3>> lines;
            PMP::surface_intersection(*first, *second, std::back_inserter(lines));
            return lines;
        });
}

[[maybe_unused]] const bool listed[] = {
    bench::measure({"self_intersect", "CGAL", cleanAgrees, runClean<Robust>, 2}),
    bench::measure({"self_intersect", "CGAL_plain", cleanAgrees, runClean<Plain>, 2}),
    bench::measure({"self_intersect_overlapping", "CGAL", overlappingAgrees, runOverlapping<Robust>, 2}),
    bench::measure({"self_intersect_overlapping", "CGAL_plain", overlappingAgrees, runOverlapping<Plain>, 2}),
    bench::measure({"intersect", "CGAL", [](const Input&) { return true; }, runMoved, 2}),
};

} // namespace
