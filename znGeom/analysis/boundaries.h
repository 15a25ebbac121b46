/// The open borders of a mesh, or of a part of it, as vertex loops.
///
/// A border edge is a directed edge of a triangle, from one corner to the next, that no triangle has the other way
/// round. Borders are walked in the direction of these edges, so the surface lies to the left. Derived objects are
/// passed in and trusted to belong to the mesh beside them; nothing fails. All run on the calling thread and only read
/// the mesh.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// Finds the boundary loops of a mesh.
///
/// \param adjTris, adjVertices  built from this mesh by `meshAdjTris` and `meshAdjVertices`
/// \param result                replaced: the loops in order of their lowest vertices, each beginning with it; the
///                              first vertex is not repeated at the end. None for a closed mesh
///
/// Walks start at unvisited vertices in ascending order and end at a vertex that was visited. Each vertex is thus in
/// one loop at most: of two borders that touch at a vertex only the first has it, and the second is cut there and may
/// come out in pieces. Which way a walk takes at such a vertex depends on the order of its triangles. A walk that comes
/// to a vertex from which no border edge leads on does not list that vertex. An edge is considered only where its end
/// has more neighbours than triangles, or fewer: on a surface that is not manifold, or not wound consistently, a border
/// edge to a vertex with equal numbers of both goes unnoticed.
///
/// Reads the counts of each vertex once, and apart from that is linear in the border.
ZNGEOM_API void meshComputeBoundary(const CompactMesh& mesh, const MeshAdjTris& adjTris,
                                    const MeshAdjVertices& adjVertices, MeshBoundaries& result);

/// Finds the boundary loops of one region of a mesh that is divided into regions.
///
/// \param subset           its vertices are where walks start, in the order of its list
/// \param region           the number of the region
/// \param vertexRegions    for each vertex of the mesh the regions that it belongs to, as `meshVertSubsetMembership`
///                         finds them
/// \param triangleRegions  the region of each triangle, as `meshTriSubsetMembership` finds it
/// \param result           replaced, as in `meshComputeBoundary`; a loop begins with whichever of its vertices comes
///                         first in the list
///
/// Only triangles of the region count, and a vertex in more than one region counts as a border vertex: the seams
/// between regions are walked like borders. Linear in the triangles around the subset's vertices.
ZNGEOM_API void meshComputeSubsetBoundary(const CompactMesh& mesh, const MeshSubset& subset, int region,
                                          const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                                          const ArrayOfSets& vertexRegions, const Remap& triangleRegions,
                                          MeshBoundaries& result);

/// The steps from which borders are found, for algorithms that do their own walking.
namespace Boundary {

/// Takes one step along a border.
///
/// \param next  the end of the first border edge that starts at `vertex`, by the order of its triangles. Without one:
///              the last vertex that was tried; unchanged for a vertex without triangles
/// \return whether there is one
///
/// Only ends whose neighbour count differs from their triangle count are taken for border vertices.
ZNGEOM_API bool walkBoundary(int vertex, int& next, const CompactMesh& mesh, const MeshAdjTris& adjTris,
                             const MeshAdjVertices& adjVertices);

/// Whether a triangle has the directed edge from one vertex to another. Linear in the smaller of their triangle counts.
ZNGEOM_API bool hasEdge(const CompactMesh& mesh, const MeshAdjTris& adjTris, int from, int to);

/// The vertex that follows `vertex` in the triangle's cyclic order, by the first corner that holds it; -1 when none
/// does.
ZNGEOM_API int findEdge(int vertex, const MeshTriangle& triangle);

} // namespace Boundary

} // namespace znGeom
