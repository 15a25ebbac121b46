/// The numbers that tell what a mesh is like.
#pragma once

#include <optional>

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

    // Neighbourhoods; edges join two different vertices of a triangle
    std::optional<int> valenceMin, valenceMax; ///< the number of neighbours of a used vertex
    int edges = 0;
    int boundaryEdges = 0;    ///< of one triangle
    int nonManifoldEdges = 0; ///< of three triangles or more
    int boundaryVertices = 0; ///< at the end of a boundary edge

    /// Whether there are triangles, and all their edges have another one.
    bool closed = false;
};

/// Throws `Cancelled` when the user has asked to stop. n log n in the vertices, linear in the triangles.
MeshSummary summarizeMesh(const znGeom::CompactMesh& mesh, znUtil::Progress& progress);

/// The number of triangles with a corner repeated.
int countDegenerateTriangles(const znGeom::CompactMesh& mesh);

} // namespace tool
