/// Adjacency of a `CompactMesh`: triangles around a vertex, vertices around a vertex, triangles around a triangle.
///
/// A mesh has no connectivity; these functions derive it from the triangle array. Run them once and pass the results
/// along; they go stale at any change of the mesh. None fails: indices are trusted. All run on the calling thread and
/// only read the mesh, so several may run on one mesh at a time.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// Finds the triangles around each vertex.
///
/// \param result  replaced: for each vertex its triangles in ascending order, a triangle that names the vertex twice
///                listed twice; empty for a vertex that no triangle uses
///
/// A counting sort of corners by vertex: linear, two passes over the triangles.
ZNGEOM_API void meshAdjTris(const CompactMesh& mesh, MeshAdjTris& result);

/// Finds the neighbours of each vertex: the other vertices of its triangles.
///
/// \param adjTris  built from this mesh by `meshAdjTris`
/// \param result   replaced: for each vertex its neighbours, each once, in order of first encounter over the ascending
///                 triangles and their corners 0, 1, 2; a vertex is never its own neighbour
///
/// A vertex is interior to a manifold mesh where it has as many neighbours as triangles, and on a boundary where the
/// numbers differ. Linear, two passes over `adjTris`.
ZNGEOM_API void meshAdjVertices(const CompactMesh& mesh, const MeshAdjTris& adjTris, MeshAdjVertices& result);

/// Finds the triangles across the edges of each triangle, whatever their winding.
///
/// \param result  replaced: for each triangle the other triangles on its edge from corner 0 to 1, then on the edge from
///                1 to 2, then from 2 to 0, each run ascending. A boundary edge adds nothing, an edge of three
///                triangles two; a triangle that shares two edges is listed twice. A triangle's place in the set does
///                not tell its edge. An edge of k triangles takes k * (k - 1) entries; a table beyond 2^31 fails with
///                std::length_error.
///
/// Edges are grouped by their lower vertex in a counting sort: linear for bounded valence, n log n for a vertex that
/// is the lower end of very many edges.
ZNGEOM_API void meshTriAdjTris(const CompactMesh& mesh, MeshTriAdjTris& result);

/// Orders the triangles around a vertex by walking across shared edges.
///
/// \param count, tris  the triangles around `vertex`
/// \param triangles    the mesh's triangle array
/// \param sorted       replaced: the same triangles; each is followed by the first one left that has the directed edge
///                     from `vertex` to the corner before it, or by whichever is next in line when none has
///
/// Consistently wound triangles come out as a fan in one direction from the first one given. The walk does not look
/// for a boundary to start at: on an open fan it runs to the boundary and goes on with the rest as it stands.
/// Quadratic in `count`.
ZNGEOM_API void sortAdjTris(int vertex, int count, const int* tris, const MeshTriangle* triangles,
                            zn::vector<int>& sorted);

/// Finds a triangle across an edge.
///
/// \param edge             0 to 2: from corner `edge` of `triangle` to the next corner
/// \param neighbour        the first other triangle around the edge's first vertex that has its second vertex;
///                         unchanged when there is none
/// \param neighbourCorner  the corner of `neighbour` that holds the edge's second vertex; -1 when there is none
/// \return whether there is one
///
/// The direction of the edge in the neighbour is ignored. Linear in the valence of the edge's first vertex.
ZNGEOM_API bool getSharedEdgeAdjacentTriangle(const int& triangle, int edge, const MeshTriangle* triangles,
                                              const MeshAdjTris& adjTris, int& neighbour, int& neighbourCorner);

} // namespace znGeom
