/// What the commands that work on boundary loops have in common.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/picture/marking.h"
#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace CLI {
class App;
} // namespace CLI

namespace tool {

/// The boundaries of a mesh, with the adjacency that they are found by.
struct MeshBorders
{
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::MeshBoundaries boundaries;

    explicit MeshBorders(const znGeom::CompactMesh& mesh);
};

struct BoundaryLoop
{
    int inMesh; ///< its number for the library
    int numEdges;
    double length;
};

/// The longest first, of equally long ones that of the lowest vertex; those that are not finite come last.
std::vector<BoundaryLoop> loopsByLength(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries);

/// Adds `--loops I,J,...`: numbers from 1.
void addLoopsOption(CLI::App& app, std::vector<int>& wanted, const std::string& help);

/// Fails where a number is higher than there are loops.
void checkLoopNumbers(const std::vector<int>& wanted, std::size_t numLoops, const std::string& path);

/// The edges of a loop.
void addLines(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries, int loop, Marking& marking);

} // namespace tool
