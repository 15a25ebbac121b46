#include "apps/zngeom/measuring/boundary_loops.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <cmath>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/usage.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/path_length.h"

namespace tool {

MeshBorders::MeshBorders(const znGeom::CompactMesh& mesh)
{
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);
    znGeom::meshComputeBoundary(mesh, adjTris, adjVertices, boundaries);
}

std::vector<BoundaryLoop> loopsByLength(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries)
{
    std::vector<BoundaryLoop> loops;
    for (int i = 0; i < boundaries.size(); ++i)
        loops.push_back({i, boundaries.getLength(i),
                         znGeom::meshPathLength(mesh, {boundaries.getStart(i), boundaries.getEnd(i)}, true)});
    const auto key = [](const BoundaryLoop& loop) { return std::isfinite(loop.length) ? -loop.length : 1; };
    std::stable_sort(loops.begin(), loops.end(),
                     [&](const BoundaryLoop& a, const BoundaryLoop& b) { return key(a) < key(b); });
    return loops;
}

void addLoopsOption(CLI::App& app, std::vector<int>& wanted, const std::string& help)
{
    app.add_option("--loops", wanted, help)
        ->check(wholeNumberFrom(1))
        ->delimiter(',')
        ->allow_extra_args(false)
        ->option_text("I,J,...");
}

void checkLoopNumbers(const std::vector<int>& wanted, std::size_t numLoops, const std::string& path)
{
    for (const int number : wanted)
        if (static_cast<std::size_t>(number) > numLoops)
            throw Failure(inputName(path) + ": there is no boundary loop " + std::to_string(number) +
                          ", the mesh has " + (numLoops == 0 ? "none" : std::to_string(numLoops)));
}

void addLines(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries, int loop, Marking& marking)
{
    const int *begin = boundaries.getStart(loop), *end = boundaries.getEnd(loop);
    for (const int* vertex = begin; vertex != end; ++vertex) {
        const int next = vertex + 1 == end ? *begin : vertex[1];
        marking.lines.push_back({mesh.getVertices()[*vertex].asPoint(), mesh.getVertices()[next].asPoint()});
    }
}

} // namespace tool
