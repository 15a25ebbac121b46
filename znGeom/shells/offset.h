/// `znGeom::MeshOffset`: surfaces at a distance, and shells of a given thickness.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

class MeshOffsetImpl;

/// What pruning did to the offset vertices of a mesh.
struct MeshOffsetPruning
{
    int tooClose = 0; ///< removed: nearer to a vertex of the mesh than the distance
    int turned = 0;   ///< removed for a triangle that had turned over
    // What is left, as removing it failed. A vertex may count in both.
    int tooCloseLeft = 0;
    int turnedLeft = 0; ///< with a triangle that is turned over now; not tried where nothing was too close
};

/// Moves a copy of a surface by a distance, and joins the two to a closed shell.
///
/// Each vertex gets a copy that is moved against its normal: a positive distance goes inward, a negative one outward.
/// The normal is the mean of those of the triangles around the vertex, weighted by the angles at which they meet their
/// neighbours. Triangles without area have no say in it. The copy of the surface is wound the other way. Every edge of
/// the mesh that has no second triangle, wherever it lies, gets a wall of two triangles to its copy; where an edge has
/// three triangles one of them gets the wall.
///
/// Copies that came nearer to a vertex of the mesh than the distance are then removed, whatever the unit of the mesh:
/// rounding is told from nearness by the size of the coordinates. If there were any, so are those at which a triangle
/// of the copy has turned over, until no more can be removed. A vertex is removed by swapping its edges away down to
/// three, after which the swapped edges are improved; one that can't be brought down to three stays, with its edges
/// swapped. Where surfaces only touch at a vertex its copy is never removed. Nothing looks at the distance between
/// vertices and triangles: where edges are longer than the distance, the copy may come nearer to the mesh, or cross it
/// or itself.
///
/// All arguments are borrowed and must not change. Each call does all the work anew, on the calling thread but for the
/// normals and distances; it can't be cancelled. The same result on any number of threads. About 4 us a vertex, more
/// where much is pruned, and 1.5 kB of memory.
class ZNGEOM_API MeshOffset
{
public:
    /// \param octree      over the vertices of `mesh` and their box
    /// \param boundaries  by `meshComputeBoundary`: walls come in the order of its loops, then those that no loop has
    /// \param adjacency   built from the mesh by `meshAdjTris`
    /// \param distance    in the mesh's units. At 0, and where it is not finite, nothing is pruned
    MeshOffset(const CompactMesh& mesh, const Octree& octree, const MeshBoundaries& boundaries,
               const MeshAdjTris& adjacency, double distance);
    MeshOffset(const MeshOffset& other);
    MeshOffset(MeshOffset&& other) noexcept;
    MeshOffset& operator=(const MeshOffset&) = delete;
    ~MeshOffset();

    /// When a triangle of the copy counts as turned over at a vertex: where the cosine of the angle between what it
    /// faces and the way that the mesh faces at that vertex is above this. At 0, as at the start, a triangle that
    /// merely stands across counts as soon as it leans back: at the tips of thin parts removing its vertices makes the
    /// next such triangle, and so on, and the part may go as a whole. At 0.7 it stays.
    /// \param cosine  brought to between 0 and 1; for all calculations from now on
    void setTurnedFrom(double cosine);

    /// \param shell  true for the mesh with its copy and the walls, closed; false for the copy alone, which lacks
    ///               vertices that only walls held
    /// \return never null; the caller's to delete. With normals and no other channels. Vertices that no triangle uses
    ///         stay: theirs, and their copies, at the same places
    ///
    /// In the shell the vertices and triangles of the mesh come first, in their order.
    CompactMesh* calculate(bool shell);

    /// The shell, with the way from the mesh to it.
    /// \param vertexRemap    replaced: for each vertex of the mesh its index in the shell, then for each that was made
    /// \param offsetIndices  replaced: for each vertex of the mesh the index of its copy; -1 where that was removed
    CompactMesh* calculate(Array<int>& vertexRemap, Array<int>& offsetIndices);

    /// Of the last calculation.
    const MeshOffsetPruning& pruning() const;

private:
    zn::ImplPointer<MeshOffsetImpl> m_impl;
};

} // namespace znGeom
