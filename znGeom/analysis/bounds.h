/// Bounding boxes of meshes, arrangements, triangles and neighbourhoods.
///
/// Boxes are replaced, whatever they held before. Where there is nothing to bound the result is the invalid box; a NaN
/// coordinate bounds nothing.
#pragma once

#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// The box of all vertices, including those that no triangle uses. A side at 0 is +0, also where all vertices there
/// have -0. Linear; on all threads, as are all functions of this name.
ZNGEOM_API void meshBoundingBox(const PointMesh& mesh, BoundingBox& box);

/// The box of selected vertices.
///
/// \param selection  null takes all vertices; members beyond the last vertex are ignored
ZNGEOM_API void meshBoundingBox(const PointMesh& mesh, const BitVector* selection, BoundingBox& box);

/// The corners of the box of all vertices.
///
/// \param min, max  three numbers each; the largest float and its negative where there is nothing to bound
ZNGEOM_API void meshBoundingBox(const PointMesh& mesh, double* min, double* max);

/// A box around all meshes of an arrangement, each where its placement puts it. It holds the transformed boxes of the
/// meshes and not just their transformed vertices, so that it may be larger than the tight one. Placements without a
/// mesh, and meshes without a box, add nothing.
ZNGEOM_API void arrangementBoundingBox(const zn::list<MeshPlacement>& placements, BoundingBox& box);

/// The box of the three corners of a triangle.
///
/// \param vertices  the mesh's vertex array
ZNGEOM_API void meshTriBoundingBox(const MeshVertex* vertices, const MeshTriangle& triangle, BoundingBox& box);

/// The boxes of `count` triangles; `boxes` has room for as many. On the calling thread.
ZNGEOM_API void meshTriBoundingBoxes(const MeshVertex* vertices, const MeshTriangle* triangles, int count,
                                     BoundingBox* boxes);

/// The box of the triangles around each vertex.
///
/// \param adjTris    built from this mesh by `meshAdjTris`
/// \param perVertex  room for one box per vertex; a vertex that no triangle uses gets the invalid box
///
/// Linear; on all threads.
ZNGEOM_API void meshComputeNeighbourBBoxes(const CompactMesh& mesh, const MeshAdjTris& adjTris, BoundingBox* perVertex);

} // namespace znGeom
