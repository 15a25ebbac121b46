#include "apps/zngeom/numbered_loops.h"

#include <algorithm>
#include <cmath>

#include "apps/zngeom/failure.h"
#include "apps/zngeom/mesh_files.h"
#include "znGeom/analysis/path_length.h"

namespace tool {

std::vector<NumberedLoop> numberLoops(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries)
{
    std::vector<NumberedLoop> loops;
    for (int i = 0; i < boundaries.size(); ++i)
        loops.push_back({i, boundaries.getLength(i),
                         znGeom::meshPathLength(mesh, {boundaries.getStart(i), boundaries.getEnd(i)}, true)});
    const auto key = [](const NumberedLoop& loop) { return std::isfinite(loop.length) ? -loop.length : 1; };
    std::stable_sort(loops.begin(), loops.end(),
                     [&](const NumberedLoop& a, const NumberedLoop& b) { return key(a) < key(b); });
    return loops;
}

std::size_t loopIndex(int number, std::size_t numLoops, const std::string& path)
{
    const auto index = static_cast<std::size_t>(number - 1);
    if (index < numLoops) return index;
    throw Failure(inputName(path) + ": there is no boundary loop " + std::to_string(number) + ", the mesh has " +
                  (numLoops == 0 ? "none" : std::to_string(numLoops)));
}

} // namespace tool
