/// Boundary loops as the commands number them that work on the library's own.
#pragma once

#include <string>
#include <vector>

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

struct NumberedLoop
{
    int inMesh; ///< its number for the library
    int numEdges;
    double length;
};

/// The longest first, of equally long ones that of the lowest vertex; those that are not finite come last. People
/// count them from 1.
std::vector<NumberedLoop> numberLoops(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& boundaries);

/// The index of a loop, from its number. Fails where there is none.
std::size_t loopIndex(int number, std::size_t numLoops, const std::string& path);

} // namespace tool
