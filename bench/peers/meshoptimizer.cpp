// meshoptimizer welds by hashing the bytes of each vertex: a map, then the map applied to indices and to vertices.
#include "bench/checks.h"
#include "bench/suite.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using bench::Input;

struct Welded
{
    std::unique_ptr<unsigned[]> remap;
    std::unique_ptr<float[]> positions;
    std::size_t numVertices = 0;
};

/// The map and the new vertices are fresh memory of exactly their size, the indices are replaced in place.
Welded weld(const bench::Soup& soup, std::vector<unsigned>& indices)
{
    constexpr std::size_t vertexSize = 3 * sizeof(float);
    const std::size_t numVertices = soup.positions.size() / 3;
    Welded welded;
    welded.remap = std::make_unique_for_overwrite<unsigned[]>(numVertices);
    welded.numVertices = meshopt_generateVertexRemap(welded.remap.get(), indices.data(), indices.size(),
                                                     soup.positions.data(), numVertices, vertexSize);
    meshopt_remapIndexBuffer(indices.data(), indices.data(), indices.size(), welded.remap.get());
    welded.positions = std::make_unique_for_overwrite<float[]>(3 * welded.numVertices);
    meshopt_remapVertexBuffer(welded.positions.get(), soup.positions.data(), numVertices, vertexSize,
                              welded.remap.get());
    return welded;
}

std::vector<unsigned> unsignedIndices(const bench::Soup& soup)
{
    return {soup.triangles.begin(), soup.triangles.end()};
}

bool weldingAgrees(const Input& input)
{
    std::vector<unsigned> indices = unsignedIndices(input.blownUp());
    const Welded welded = weld(input.blownUp(), indices);
    bench::Soup result;
    result.positions.assign(welded.positions.get(), welded.positions.get() + 3 * welded.numVertices);
    result.triangles.assign(indices.begin(), indices.end());
    return bench::sameSurface(input.blownUp(), result, bench::distinctPositions(input.blownUp()), 0);
}

void runWelding(benchmark::State& state, const Input& input)
{
    std::vector<unsigned> indices;
    bench::timeWork(
        state,
        [&] {
            indices = unsignedIndices(input.blownUp());
            return &indices;
        },
        [&](std::vector<unsigned>* subject) { return weld(input.blownUp(), *subject); });
}

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("meshoptimizer", std::to_string(MESHOPTIMIZER_VERSION / 1000) + "." +
                                         std::to_string(MESHOPTIMIZER_VERSION / 10 % 100)),
    bench::measure({"weld", "meshoptimizer", weldingAgrees, runWelding}),
};

} // namespace
