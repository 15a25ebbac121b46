/// The numbers that describe a mesh.
#pragma once

#include <optional>
#include <string>

#include "znGeom/analysis/border_loops.h"
#include "znGeom/analysis/census.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct MeshSummary
{
    znGeom::MeshVertexCensus vertices;
    int duplicatePositions = 0; ///< vertices at the position of an earlier one
    znGeom::MeshEdgeCensus edges;
    int degenerateTriangles = 0;              ///< with a corner repeated
    int components = 0, vertexComponents = 0; ///< over shared edges, and over shared vertices
    znGeom::MeshBorderLoops boundaryLoops;    ///< the longest first

    // Measures, in the units of the file; none where a number is not finite
    std::optional<double> area;
    std::optional<double> volume;               ///< of a closed and consistently wound mesh; negative when inside out
    std::optional<double> largestDihedralAngle; ///< degrees, 0 where flat; of a consistently wound mesh
};

/// Throws `Cancelled` when the user has asked to stop. n log n in the vertices, linear in the triangles.
MeshSummary summarizeMesh(const znGeom::CompactMesh& mesh, znUtil::Progress& progress);

/// A note for meshes whose triangles lie side by side and share next to no vertices, as in STL files; empty for any
/// other mesh.
std::string soupNote(const znGeom::MeshEdgeCensus& edges, int numVertices, int duplicatePositions);

} // namespace tool
