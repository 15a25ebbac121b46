/// The connected components of a mesh as sets of triangles, over shared edges or over shared vertices.
#pragma once

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// Components are numbered from 0, the one of most triangles first; of equal ones the one of the lowest triangle.
struct MeshTriangleComponents
{
    zn::vector<int> ofTriangle; ///< per triangle its component
    zn::vector<int> sizes;      ///< per component its triangles

    int count() const { return sizes.size(); }
};

/// Divides a mesh into parts whose triangles are connected over edges; whatever touches at a vertex alone stays apart.
///
/// \param sides     built from this mesh by `meshEdgeSides`
/// \param progress  advanced; a cancel leaves `result` as it was
/// \param result    replaced
/// \return false after a cancel
///
/// How triangles are wound plays no part. Union-find over the triangles: as good as linear, and n log n in the
/// components. On the calling thread.
ZNGEOM_API bool meshEdgeComponents(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                                   MeshTriangleComponents& result);
inline void meshEdgeComponents(const CompactMesh& mesh, const MeshEdgeSides& sides, MeshTriangleComponents& result)
{
    znUtil::Progress progress;
    meshEdgeComponents(mesh, sides, progress, result);
}

/// The same over vertices: the components that `meshComponents` counts.
/// \param adjTris  built from this mesh by `meshAdjTris`
ZNGEOM_API bool meshVertexComponents(const CompactMesh& mesh, const MeshAdjTris& adjTris, znUtil::Progress& progress,
                                     MeshTriangleComponents& result);
inline void meshVertexComponents(const CompactMesh& mesh, const MeshAdjTris& adjTris, MeshTriangleComponents& result)
{
    znUtil::Progress progress;
    meshVertexComponents(mesh, adjTris, progress, result);
}

} // namespace znGeom
