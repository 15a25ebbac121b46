/// Keeping the triangle list of a `CompactMesh`.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom {

/// Makes triangles from the polygon description: for each polygon of three corners or more the fan around its first
/// corner; polygons of fewer corners give nothing. A mesh that has triangles already, or has no polygons, stays as it
/// is. The polygons stay. Vertex channels remain valid; one `TopologyChanged` is sent if there is a triangle.
///
/// \param remap  replaced: from each new triangle to its polygon; unchanged when nothing is done
///
/// Linear; runs on the calling thread.
ZNGEOM_API void meshTriangulate(CompactMesh& mesh);
ZNGEOM_API void meshTriangulate(CompactMesh& mesh, Remap& remap);

/// Lists the edges of the triangles, each once, for drawing.
///
/// \param count  set to the number of edges
/// \param lines  set to their vertices, two each, the lower one first, in the order of the lower vertices and then of
///               the higher ones; null for a mesh without triangles. The block has room for six numbers per triangle,
///               and the caller frees it with `std::free`
///
/// A triangle that repeats a vertex has a line from that vertex to itself. Sides are grouped by their lower vertex in a
/// counting sort on all threads: linear, n log n for a vertex that is the lower end of very many of them. A mesh of
/// more than 2^31 sides fails with std::length_error.
ZNGEOM_API void meshTrianglesAsLines(const CompactMesh& mesh, int& count, int*& lines);

} // namespace znGeom
