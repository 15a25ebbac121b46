// The half-edge mesh from arrays, built and twinned, and what it takes of memory.
#include "bench/checks.h"
#include "bench/suite.h"
#include "znGeom/topology.h"
#include "znGeom/topology/twin.h"

#include <memory>
#include <vector>

namespace {

using bench::Input;
using znGeom::TopoMesh;

std::unique_ptr<TopoMesh> build(const bench::Soup& soup)
{
    auto mesh = std::make_unique<TopoMesh>();
    std::vector<znGeom::TopoMeshVertex> vertices;
    vertices.reserve(soup.positions.size() / 3);
    for (std::size_t i = 0; i < soup.positions.size(); i += 3)
        vertices.push_back(mesh->allocVertex(znLinear::Point(znLinear::PointFlt(&soup.positions[i]))));
    const auto vertexAt = [&](std::size_t corner) {
        return vertices[static_cast<std::size_t>(soup.triangles[corner])];
    };
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        mesh->allocTriangle(vertexAt(i), vertexAt(i + 1), vertexAt(i + 2));
    znGeom::meshTwin(*mesh);
    return mesh;
}

bool neighboursAgree(const Input& input)
{
    const auto mesh = build(input.soup());
    bench::RelationSum neighbours;
    for (const znGeom::TopoMeshEdge edge : edgesOf(*mesh)) {
        const znGeom::TopoMeshVertex end = endOf(edge);
        if (edge->twin && (edge->twin->origin != end || edge->twin->twin != edge)) return false;
        neighbours.add(edge->origin.number(), end.number());
        if (!edge->twin) neighbours.add(end.number(), edge->origin.number());
    }
    return neighbours == bench::vertexNeighbours(input.soup());
}

void runBuild(benchmark::State& state, const Input& input) { bench::timeHalfedgeBuild(state, input, build); }

[[maybe_unused]] const bool listed = bench::measure({"topo_mesh", "znGeom", neighboursAgree, runBuild});

} // namespace
