/// Single casts by the vertex octree, and at one triangle: for picking, without triangle sets.
#pragma once

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/spatial/shapes/frustum.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

/// Where a line meets a triangle of a mesh.
///
/// \param hit  untouched when the result is false
/// \return as `intersectRayTriangle` says of the line's origin and direction: a front side counts behind the origin
///         too; what is too small for the direction's length does not count at all: triangles below an area of 5e-7 for
///         a length of 1
ZNGEOM_API bool meshRayTriIntersect(const CompactMesh& mesh, int triangle, const znLinear::Line& line,
                                    znLinear::PointFlt& hit);
ZNGEOM_API bool meshRayTriIntersect(const CompactMesh& mesh, int triangle, const znLinear::Line& line,
                                    znLinear::Point& hit);

/// Finds a triangle that is hit by the line through the middle of a frustum.
///
/// \param octree    over the vertices of `mesh` and their box
/// \param adjTris   built from the mesh by `meshAdjTris`
/// \param hit       untouched on a miss
/// \param triangle  receives its number; may be null; untouched on a miss
///
/// Looks at the triangles around the vertices of each leaf that the frustum meets, from its near cap on, and takes the
/// first that is hit: usually the nearest one, but not always. Finds nothing in a triangle none of whose vertices lies
/// in such a leaf. Prints one line. Re-entrant.
ZNGEOM_API bool meshRayIntersect(const CompactMesh& mesh, const Octree& octree, const MeshAdjTris& adjTris,
                                 const Frustum& frustum, znLinear::PointFlt& hit, int* triangle);

} // namespace znGeom
