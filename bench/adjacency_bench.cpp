// The three adjacency passes. Peers: a half-edge build from the same arrays, and the memory's own cost.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"

#include <memory>

namespace {

using bench::Input;
using znGeom::CompactMesh;

std::unique_ptr<znGeom::MeshAdjTris> trianglesAroundVertices(const CompactMesh& mesh)
{
    auto result = std::make_unique<znGeom::MeshAdjTris>();
    znGeom::meshAdjTris(mesh, *result);
    return result;
}

struct VertexAdjacency
{
    znGeom::MeshAdjTris triangles;
    znGeom::MeshAdjVertices vertices;
};

std::unique_ptr<VertexAdjacency> trianglesAndVerticesAroundVertices(const CompactMesh& mesh)
{
    auto result = std::make_unique<VertexAdjacency>();
    znGeom::meshAdjTris(mesh, result->triangles);
    znGeom::meshAdjVertices(mesh, result->triangles, result->vertices);
    return result;
}

std::unique_ptr<znGeom::MeshTriAdjTris> trianglesAroundTriangles(const CompactMesh& mesh)
{
    auto result = std::make_unique<znGeom::MeshTriAdjTris>();
    znGeom::meshTriAdjTris(mesh, *result);
    return result;
}

template <class Adjacency>
bench::RelationSum relationOf(const Adjacency& adjacency, int count)
{
    bench::RelationSum relation;
    for (int index = 0; index < count; ++index)
        for (const int triangle : adjacency.around(index)) relation.add(index, triangle);
    return relation;
}

bench::RelationSum relationOf(const znGeom::MeshAdjVertices& adjacency, int count)
{
    bench::RelationSum relation;
    for (int vertex = 0; vertex < count; ++vertex) {
        const int* record = adjacency.data + adjacency.offsets[vertex];
        for (int i = 1; i <= record[0]; ++i) relation.add(vertex, record[i]);
    }
    return relation;
}

bool adjTrisAgree(const Input& input)
{
    const auto result = trianglesAroundVertices(*bench::toCompact(input.soup()));
    return relationOf(*result, input.soup().numVertices()) == bench::vertexTriangles(input.soup());
}

bool adjVerticesAgree(const Input& input)
{
    const auto result = trianglesAndVerticesAroundVertices(*bench::toCompact(input.soup()));
    return relationOf(result->vertices, input.soup().numVertices()) == bench::vertexNeighbours(input.soup());
}

bool triAdjTrisAgree(const Input& input)
{
    const auto result = trianglesAroundTriangles(*bench::toCompact(input.soup()));
    return relationOf(*result, input.soup().numTriangles()) == bench::triangleNeighbours(input.soup());
}

template <class Build>
bool measureBuild(const char* work, bool (*agrees)(const Input&), Build build)
{
    return bench::measure({work, "znGeom", agrees, [=](benchmark::State& state, const Input& input) {
                               const auto mesh = bench::toCompact(input.soup());
                               bench::timeWork(
                                   state, [&] { return mesh.get(); },
                                   [=](const CompactMesh* subject) { return build(*subject); });
                           }});
}

[[maybe_unused]] const bool listed[] = {
    measureBuild("adj_tris", adjTrisAgree, trianglesAroundVertices),
    measureBuild("adj_tris_vertices", adjVerticesAgree, trianglesAndVerticesAroundVertices),
    measureBuild("tri_adj_tris", triAdjTrisAgree, trianglesAroundTriangles),
};

} // namespace
