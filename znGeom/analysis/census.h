/// What there is in a mesh: its vertices, edges and triangles, counted by what is true of them.
///
/// All take the edges of the mesh, built from it by `meshEdgeSides`, only read it, are linear, and run on the calling
/// thread. A cancel leaves `result` as it was, and the call then returns false.
#pragma once

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

struct MeshVertexCensus
{
    int unused = 0;                       ///< no triangle has them as a corner
    int nonFinite = 0;                    ///< with a coordinate that is infinite or not a number
    BoundingBox bounds;                   ///< of the finite ones, unused ones among them; invalid where there are none
    int minValence = -1, maxValence = -1; ///< the number of edges at a used vertex; -1 where there is none
};

struct MeshEdgeCensus
{
    int edges = 0;
    int boundary = 0;         ///< edges of one triangle
    int boundaryVertices = 0; ///< vertices at the end of one of these
    int nonManifold = 0;      ///< edges of three triangles or more
    int unbalanced = 0;       ///< of several triangles, which don't run along the edge as often one way as the other
    double longest = -1;      ///< the length of an edge, in the mesh's units; -1 where no edge has two finite ends

    /// Whether there are edges, and all have another triangle.
    bool isClosed() const { return edges > 0 && boundary == 0; }
    /// Whether neighbours run along their common edges in opposite directions.
    bool isConsistentlyWound() const { return unbalanced == 0; }
};

ZNGEOM_API bool meshCountVertices(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                                  MeshVertexCensus& result);
inline MeshVertexCensus meshCountVertices(const CompactMesh& mesh, const MeshEdgeSides& sides)
{
    znUtil::Progress progress;
    MeshVertexCensus result;
    meshCountVertices(mesh, sides, progress, result);
    return result;
}

/// A triangle that lies along an edge twice, since it repeats a vertex, counts once. All three sides of a triangle are
/// measured alike, in `double`: the longest edge is the length that people read, not the reach that `meshLongestEdge`
/// gives to searches.
ZNGEOM_API bool meshCountEdges(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                               MeshEdgeCensus& result);
inline MeshEdgeCensus meshCountEdges(const CompactMesh& mesh, const MeshEdgeSides& sides)
{
    znUtil::Progress progress;
    MeshEdgeCensus result;
    meshCountEdges(mesh, sides, progress, result);
    return result;
}

/// The number of triangles that repeat a vertex.
ZNGEOM_API int meshCountDegenerateTriangles(const CompactMesh& mesh);

} // namespace znGeom
