// Cutting along the curves of a plane, all in; the graph of a hundred sections; the sections.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/cut.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/curves.h"
#include "znGeom/scopes/convert_rep.h"

#include <cmath>
#include <memory>

namespace {

using bench::Input;
using znGeom::CompactMesh;
using Places = std::deque<std::deque<znGeom::MeshCoord>>;

constexpr double tolerance = 1e-6;
constexpr int numSections = 100;

znLinear::Plane planeOf(double height)
{
    const znLinear::Normal normal(bench::cutNormal[0], bench::cutNormal[1], bench::cutNormal[2]);
    return {znLinear::Point(bench::cutPoint) + normal.asVector() * height, normal};
}

void addSection(const CompactMesh& mesh, double height, Places& places)
{
    for (const auto& curve : znGeom::meshPlaneSection(mesh, planeOf(height))) {
        places.push_back(curve->coords);
        if (curve->closed) places.back().push_back(curve->coords.front());
    }
}

/// A mesh with the adjacency that its users have anyway.
struct Subject
{
    std::unique_ptr<CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;

    explicit Subject(const bench::Soup& soup) : mesh(bench::toCompact(soup)) { znGeom::meshAdjTris(*mesh, adjTris); }
};

std::unique_ptr<Subject> cut(std::unique_ptr<Subject>& given)
{
    Places places;
    addSection(*given->mesh, 0, places);
    znGeom::meshCut(*given->mesh, given->adjTris, places, tolerance);
    return std::move(given);
}

bool cutAgrees(const Input& input)
{
    auto subject = std::make_unique<Subject>(input.soup());
    const bench::Soup after = bench::toSoup(*cut(subject)->mesh);
    const double area = bench::areaOf(input.soup());
    return bench::components(after) > bench::components(input.soup()) &&
           std::fabs(bench::areaOf(after) - area) < 1e-6 * area;
}

void runCut(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return std::make_unique<Subject>(input.soup()); }, cut);
}

/// The half-edge mesh with a hundred sections on it.
struct Drawn
{
    Subject subject;
    znGeom::MeshConvertRep rep;
    znGeom::TopoMesh* mesh;
    znGeom::TopoMeshCurves curves;

    static znGeom::BitVector all(int size)
    {
        znGeom::BitVector bits(size);
        bits.setAllBits();
        return bits;
    }
    explicit Drawn(const bench::Soup& soup)
        : subject(soup), rep(*subject.mesh, all(subject.mesh->getNumTriangles()), all(subject.mesh->getNumVertices()),
                             subject.adjTris),
          mesh(&rep.extract())
    {
        Places places;
        for (int i = 0; i < numSections; ++i) addSection(*subject.mesh, 0.004 * (i - numSections / 2), places);
        for (const auto& run : places) {
            std::deque<znGeom::TopoMeshCoord> coords;
            for (const znGeom::MeshCoord& place : run) coords.push_back(rep.copy(place));
            znGeom::MeshCurveTopology::convert(curves, coords, tolerance);
        }
    }
};

std::unique_ptr<znGeom::MeshCurveTopology> graphOf(const std::unique_ptr<Drawn>& drawn)
{
    return std::make_unique<znGeom::MeshCurveTopology>(*drawn->mesh, drawn->curves, tolerance);
}

bool graphAgrees(const Input& input)
{
    const auto drawn = std::make_unique<Drawn>(input.soup());
    // All curves are closed: no node is a lone end.
    const auto graph = graphOf(drawn);
    for (const auto& [point, node] : graph->getIPoints())
        if (node.getDegree() < 2) return false;
    return graph->getIPoints().size() > 0 && drawn->curves.size() >= numSections;
}

void runGraph(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return std::make_unique<Drawn>(input.soup()); }, graphOf);
}

[[maybe_unused]] const bool cutListed =
    bench::measure({"cut", "znGeom", cutAgrees, runCut, 0, bench::generatedInputs()});
[[maybe_unused]] const bool graphListed =
    bench::measure({"curve_topology", "znGeom", graphAgrees, runGraph, 0, bench::generatedInputs()});

} // namespace
