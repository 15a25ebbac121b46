/// Edges of more than two triangles, and vertices at which several fans touch: finding and mending them.
#pragma once

#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// Where a mesh is no manifold surface, with or without boundary.
class ZNGEOM_API MeshManifoldResult
{
public:
    /// The vertices whose triangles are not all connected through the edges at that vertex; sized to the vertex count.
    /// None as long as there is a bad edge.
    BitVector badVertices;
    /// The edges along which more than two sides of triangles lie, lower vertex first, ascending, each once.
    zn::vector<std::pair<int, int>> badEdges;

    bool isManifold() const { return badEdges.empty() && badVertices.getNumSetBits() == 0; }
};

/// Finds the edges and vertices at which a mesh is not manifold.
///
/// \param adjTris  built from the mesh by `meshAdjTris`
/// \param result   replaced
/// \param pool     on which it runs; the result is the same on any
///
/// Winding does not matter. Vertices are judged only where no edge is bad, on purpose: edges are mended first, and that
/// changes the fans. A vertex with one triangle is never bad. A triangle that repeats a vertex counts by its sides: two
/// of them lie along one edge, and its vertex has an edge to itself, of which each such side counts twice: it is bad
/// when there are two of them. Linear for bounded valence, n log n at a vertex of very many triangles.
ZNGEOM_API void meshManifold(const CompactMesh& mesh, const MeshAdjTris& adjTris, MeshManifoldResult& result,
                             znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

/// Mends a mesh by one step, after which adjacency and result are stale.
///
/// \param adjTris  built from the mesh by `meshAdjTris`
/// \param result   found in the mesh by `meshManifold`
///
/// If there are bad edges, triangles are removed: at each edge all but the two whose third vertices have the most
/// triangles, of equals those of higher number. They are added to the mesh's selection of triangles, which is then
/// deleted as `MeshDeleteSelected` does, with what was selected before. A triangle that repeats the higher vertex of an
/// edge is there only once, though two of its sides lie along it; beside a single other triangle it stays.
///
/// Otherwise, bad vertices are split: the fan of the lowest triangle keeps the vertex, each further fan gets a new one
/// at the same position, in the order of the vertices and of the lowest triangles of their fans. One `TopologyChanged`
/// is reported, without flags, so that normals and texture channels are dropped; named attributes of the new vertices
/// are zero.
///
/// Linear, n log n at a vertex of very many triangles. Runs on the calling thread.
ZNGEOM_API void meshMakeManifold(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshManifoldResult& result);

/// Mends a mesh step by step until it is manifold, or until a step changes nothing: an edge can then be left on which
/// more than two sides, but only two triangles lie, one of which repeats the edge's higher vertex.
/// `meshRemoveDuplicateTris` takes such triangles out.
///
/// At most one step that removes and one that splits change something; the adjacency is built anew for each.
ZNGEOM_API void meshMakeManifold(CompactMesh& mesh);

} // namespace znGeom
