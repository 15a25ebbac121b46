/// Filling an octree with the triangles or the lines of a mesh.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

/// Finds the triangles that touch each leaf of an octree.
///
/// \param octree  built over the mesh's vertices and their box; what lies outside its box touches no leaf
/// \param result  replaced, one set of ascending triangle numbers per leaf; untouched when the octree has no leaves
///
/// A triangle that lies wholly within the leaf at which the triangle before it ended is recorded in that leaf alone,
/// even where it touches the face of another: consecutive triangles tend to be close, and most then need no search. Any
/// other triangle is recorded in each leaf that it truly touches, however large it is and however few vertices the leaf
/// has. The table is the same for any number of threads.
///
/// About linear in the number of recorded entries; runs on the process-wide pool. Prints one message of two lines.
ZNGEOM_API void computeOctreeTris(const CompactMesh& mesh, const Octree& octree, OctreeTris& result);

/// Finds the line segments of a mesh (`getLines`) that touch each leaf of an octree, in the same way.
ZNGEOM_API void meshOctreeLines(const CompactMesh& mesh, const Octree& octree, OctreeLines& result);

} // namespace znGeom
