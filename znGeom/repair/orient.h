/// Consistent winding: whether neighbours run along their common edges in opposite directions, and making them do so.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// Orients a mesh: turns triangles over until no two of them run along an edge in the same direction.
///
/// Mesh and adjacency are not owned; the adjacency must have been built from the mesh by `meshAdjTris`, and stays right
/// when triangles are turned over. Runs on the calling thread, except for the first check.
class ZNGEOM_API MeshOrient
{
public:
    /// Checks whether the mesh is oriented, as `meshOriented` does.
    MeshOrient(CompactMesh& mesh, const MeshAdjTris& adjTris);

    /// Orients the mesh, unless it is oriented.
    ///
    /// From each triangle in ascending order that was not reached before, the neighbours across edges are visited
    /// breadth first, and turned over, corners 1 and 2 exchanged, where they are wound against the triangle from which
    /// they are reached: the lowest triangle of each part stays as it is. The search fails at a triangle that was
    /// reached before and is wound the wrong way: such a surface is one-sided, or has an edge of three triangles or a
    /// triangle that repeats a vertex. What was turned over then stays so, and one more search starts at that triangle,
    /// which may turn over more, and ends where the conflict comes back.
    ///
    /// If a triangle was turned over, one `TopologyChanged` is reported, also after a failure, which keeps UVs, STs and
    /// colours and drops normals, strips and fans. Every triangle is compared with those around the end of each of its
    /// sides that has fewer: linear for bounded valence, and for a vertex of very many triangles too.
    void orient();

    /// Whether the mesh is oriented now: it was from the start, or `orient` succeeded.
    bool isOriented() const { return m_oriented; }
    /// Whether the mesh is known to be orientable: false before `orient` unless it is oriented, and after a failure.
    bool isOrientable() const { return m_orientable; }
    /// The triangles that the last search reached: after a success all of them, after a failure those reached from the
    /// triangle at which it failed until the conflict came back. Empty, of size 0, when nothing was searched.
    const BitVector& getAffectedTriangles() const { return m_visited; }

private:
    bool computeOrientation(bool& turnedOver);

    CompactMesh* m_mesh;
    const MeshAdjTris* m_adjTris;
    BitVector m_visited;
    Array<int> m_queue; ///< triangles in the order in which they were reached
    int m_offending = -1;
    bool m_oriented, m_orientable;
};

/// Whether no two triangles run along an edge in the same direction. A boundary edge has no partner to be compared
/// with; a mesh without triangles is oriented.
///
/// \param adjTris  built from the mesh by `meshAdjTris`
/// \param pool     on which it runs
///
/// Linear for bounded valence, n log n at a vertex of very many triangles.
ZNGEOM_API bool meshOriented(const CompactMesh& mesh, const MeshAdjTris& adjTris,
                             znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

/// Orients a mesh in place as `MeshOrient` does.
/// \return whether it is oriented now; false where that is impossible, with some triangles turned over
ZNGEOM_API bool meshMakeOriented(CompactMesh& mesh, const MeshAdjTris& adjTris);

} // namespace znGeom
