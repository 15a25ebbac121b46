/// The numbers that tell what a mesh is like.
#pragma once

#include <optional>

#include "apps/zngeom/surface.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct Bounds
{
    float low[3], high[3];
};

struct MeshSummary
{
    // Vertices
    int unusedVertices = 0;       ///< no triangle has them as a corner
    int duplicatePositions = 0;   ///< vertices at the place of an earlier one; those below not among them
    int nonFiniteVertices = 0;    ///< with a coordinate that is infinite or not a number
    std::optional<Bounds> bounds; ///< of the other ones, if any

    // Triangles
    int degenerateTriangles = 0; ///< with a corner repeated

    // Neighbourhoods
    std::optional<int> valenceMin, valenceMax; ///< the number of neighbours of a used vertex
    EdgeCounts edges;
    int components = 0, vertexComponents = 0; ///< over shared edges, and over shared vertices
    std::vector<BoundaryLoop> boundaryLoops;  ///< the longest first

    /// Whether there are triangles, and all their edges have another one.
    bool closed = false;
    /// Whether neighbours run along their common edges in opposite directions.
    bool consistentlyWound() const { return edges.unbalanced == 0; }

    // Measures, in the units of the file; none where a number is not finite
    std::optional<double> area;
    std::optional<double> volume;               ///< of a closed and consistently wound mesh; negative when inside out
    std::optional<double> largestDihedralAngle; ///< degrees, 0 where flat; of a consistently wound mesh
};

/// Throws `Cancelled` when the user has asked to stop. n log n in the vertices, linear in the triangles.
MeshSummary summarizeMesh(const znGeom::CompactMesh& mesh, znUtil::Progress& progress);

/// Whether the three coordinates are numbers and not infinite.
bool isFinite(const znGeom::MeshVertex& vertex);

/// The number of triangles with a corner repeated.
int countDegenerateTriangles(const znGeom::CompactMesh& mesh);

} // namespace tool
