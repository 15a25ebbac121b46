// Deleting and copying out half a mesh, and finding the borders of that half and of a mesh with many holes. Peers: the
// memory's own cost, every array of the input read once and every array of the result written once.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/streams.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/editing.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

namespace {

using bench::Input;
using bench::Soup;
using znGeom::CompactMesh;

/// The mesh with the triangles on one side and their corners selected.
std::unique_ptr<CompactMesh> halfSelected(const Soup& soup, const std::vector<int>& half)
{
    auto mesh = bench::toCompact(soup);
    mesh->getSelectedTriangles().resize(soup.numTriangles());
    mesh->getSelectedTriangles().setBits(static_cast<int>(half.size()), half.data());
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(*mesh, adjTris);
    znGeom::MeshSelect(*mesh, adjTris).selectVerticesFromTriangles();
    return mesh;
}

/// The triangles that begin on the other side.
std::vector<int> otherHalf(const Soup& soup)
{
    std::vector<int> all(static_cast<std::size_t>(soup.numTriangles())), rest;
    std::iota(all.begin(), all.end(), 0);
    const std::vector<int> half = bench::trianglesOnOneSide(soup);
    std::set_difference(all.begin(), all.end(), half.begin(), half.end(), std::back_inserter(rest));
    return rest;
}

bool deleteSelected(CompactMesh& mesh)
{
    znGeom::MeshDeleteSelected{mesh}();
    return true;
}

std::unique_ptr<CompactMesh> extract(const CompactMesh& mesh)
{
    auto target = std::make_unique<CompactMesh>();
    znGeom::meshExtract(*target, mesh);
    return target;
}

/// Vertices that no triangle used before are not among those that are deleted.
bool deletingAgrees(const Input& input)
{
    const Soup& soup = input.soup();
    const std::vector<int> half = bench::trianglesOnOneSide(soup), rest = otherHalf(soup);
    std::vector<int> all(half);
    all.insert(all.end(), rest.begin(), rest.end());
    const Soup wanted = bench::part(soup, rest);
    const int unused = soup.numVertices() - bench::part(soup, all).numVertices();
    const auto mesh = halfSelected(soup, half);
    deleteSelected(*mesh);
    return bench::sameSurface(wanted, bench::toSoup(*mesh), wanted.numVertices() + unused, 0);
}

void runDeleting(benchmark::State& state, const Input& input)
{
    const auto original = halfSelected(input.soup(), bench::trianglesOnOneSide(input.soup()));
    std::unique_ptr<CompactMesh> mesh;
    bench::timeWork(
        state,
        [&] {
            mesh = std::make_unique<CompactMesh>(*original);
            return mesh.get();
        },
        [](CompactMesh* subject) { return deleteSelected(*subject); });
}

/// In place, and the maps from old numbers to new ones in memory of their own.
void runDeletingMemory(benchmark::State& state, const Input& input)
{
    Soup soup = input.soup();
    bench::timeWork(
        state, [&] { return &soup; },
        [](Soup* subject) {
            bench::rewriteOnce(subject->positions);
            bench::rewriteOnce(subject->triangles);
            return std::pair(bench::writtenOnce<int>(subject->positions.size() / 3, 0),
                             bench::writtenOnce<int>(subject->triangles.size() / 3, 0));
        });
}

bool extractingAgrees(const Input& input)
{
    const std::vector<int> half = bench::trianglesOnOneSide(input.soup());
    const Soup wanted = bench::part(input.soup(), half);
    const auto result = extract(*halfSelected(input.soup(), half));
    return bench::sameSurface(wanted, bench::toSoup(*result), wanted.numVertices(), 0);
}

void runExtracting(benchmark::State& state, const Input& input)
{
    const auto mesh = halfSelected(input.soup(), bench::trianglesOnOneSide(input.soup()));
    bench::timeWork(
        state, [&] { return mesh.get(); }, [](const CompactMesh* subject) { return extract(*subject); });
}

void runExtractingMemory(benchmark::State& state, const Input& input)
{
    const Soup& soup = input.soup();
    const Soup result = bench::part(soup, bench::trianglesOnOneSide(soup));
    bench::timeWork(
        state, [&] { return &soup; },
        [&](const Soup* subject) {
            const std::uint64_t sum = bench::readOnce(subject->positions) ^ bench::readOnce(subject->triangles);
            return std::pair(bench::writtenOnce<float>(result.positions.size(), sum),
                             bench::writtenOnce<int>(result.triangles.size(), sum));
        });
}

/// An open mesh and its adjacency, from which borders are found.
struct BorderedMesh
{
    std::unique_ptr<CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;

    explicit BorderedMesh(const Soup& soup) : mesh(bench::toCompact(soup))
    {
        znGeom::meshAdjTris(*mesh, adjTris);
        znGeom::meshAdjVertices(*mesh, adjTris, adjVertices);
    }
    /// The length of `adjVertices.data`.
    std::size_t vertexData() const
    {
        std::size_t sum = 0;
        for (int vertex = 0; vertex < adjVertices.numVertices; ++vertex)
            sum += static_cast<std::size_t>(1 + adjVertices.numNeighbours(vertex));
        return sum;
    }
};

std::unique_ptr<znGeom::MeshBoundaries> boundaries(const BorderedMesh& open)
{
    auto result = std::make_unique<znGeom::MeshBoundaries>();
    znGeom::meshComputeBoundary(*open.mesh, open.adjTris, open.adjVertices, *result);
    return result;
}

using Opened = Soup (*)(const Soup&);

/// One border or a few.
Soup firstHalf(const Soup& soup) { return bench::part(soup, bench::trianglesOnOneSide(soup)); }

bool measureBoundaries(const char* work, Opened opened)
{
    return bench::measure({work, "znGeom",
                           [=](const Input& input) {
                               const Soup soup = opened(input.soup());
                               const int listed = boundaries(BorderedMesh(soup))->sequence().values.size();
                               return listed == bench::borderVertices(soup);
                           },
                           [=](benchmark::State& state, const Input& input) {
                               const BorderedMesh open(opened(input.soup()));
                               bench::timeWork(
                                   state, [&] { return &open; },
                                   [](const BorderedMesh* subject) { return boundaries(*subject); });
                           }});
}

/// The counts of triangles and of neighbours lie among the rest, so that practically every cache line is read.
void runBoundariesMemory(benchmark::State& state, const Soup& soup)
{
    const BorderedMesh open(soup);
    const auto numVertices = static_cast<std::size_t>(soup.numVertices());
    const auto numResults = static_cast<std::size_t>(boundaries(open)->sequence().values.size());
    const std::size_t numData = open.vertexData();
    const std::vector<int> triangleStarts(numVertices);
    bench::timeWork(
        state, [&] { return &open.adjVertices; },
        [&](const znGeom::MeshAdjVertices* subject) {
            const std::uint64_t sum = bench::readOnce(subject->offsets, numVertices) ^
                                      bench::readOnce(subject->data, numData) ^ bench::readOnce(triangleStarts);
            return bench::writtenOnce<int>(numResults, sum);
        });
}

bool measureBoundariesMemory(const char* work, Opened opened)
{
    return bench::measure(
        {work, "memory", [](const Input&) { return true; },
         [=](benchmark::State& state, const Input& input) { runBoundariesMemory(state, opened(input.soup())); }});
}

bool unchecked(const Input&) { return true; }

[[maybe_unused]] const bool listed[] = {
    bench::measure({"delete_selected", "znGeom", deletingAgrees, runDeleting}),
    bench::measure({"delete_selected", "memory", unchecked, runDeletingMemory}),
    bench::measure({"extract", "znGeom", extractingAgrees, runExtracting}),
    bench::measure({"extract", "memory", unchecked, runExtractingMemory}),
    measureBoundaries("boundary", firstHalf),
    measureBoundariesMemory("boundary", firstHalf),
    measureBoundaries("boundary_many_holes", bench::punched),
    measureBoundariesMemory("boundary_many_holes", bench::punched),
};

} // namespace
