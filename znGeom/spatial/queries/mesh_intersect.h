/// Where the triangles of one mesh cross each other, and where those of two meshes do.
#pragma once

#include <deque>

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/shapes/triangle_intersect.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

class MeshIntersectImpl;

/// The segment along which a triangle crosses another, as places on the first: both name the same triangle. Invalid on
/// a triangle without area.
struct MeshIntersectPair
{
    MeshCoord start, end;
};

/// Finds crossings: pairs of triangles that have a segment in common, by `intersect` of two triangles. What merely
/// touches at a point does not cross; a triangle with a corner that is not finite crosses nothing.
///
/// The first call makes a tree over the triangles, which is kept: about 0.1 us and 35 bytes a triangle. The mesh is
/// borrowed and must not change. Used by one thread at a time; the work runs on a pool, and the results are the same
/// for any number of threads. A copy shares the tree of its source and must not outlive it.
class ZNGEOM_API MeshIntersect
{
public:
    explicit MeshIntersect(const CompactMesh& mesh, znUtil::ThreadPool& pool = znUtil::ThreadPool::get());
    /// \param octree      over the vertices of `mesh`: its root box tells early that two meshes are apart. Borrowed
    /// \param octreeTris  of both. Crossings don't depend on it
    MeshIntersect(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris,
                  znUtil::ThreadPool& pool = znUtil::ThreadPool::get());
    MeshIntersect(const MeshIntersect& other);
    MeshIntersect(MeshIntersect&& other) noexcept;
    MeshIntersect& operator=(const MeshIntersect&) = delete;
    ~MeshIntersect();

    /// Finds the crossings within the mesh.
    ///
    /// \param progress  advanced. After a cancel `result` has some of the crossings
    /// \param result    replaced: two entries for each crossing, first that on the triangle of the higher number, then
    ///                  that on the other. Ordered by the higher number, then by the lower
    ///
    /// Triangles that share a vertex number are never tested, even if they fold through each other: where vertices are
    /// not welded, neighbours are found to have their edge in common. n log n and the pairs whose boxes meet.
    void selfIntersect(znUtil::Progress& progress, std::deque<MeshIntersectPair>& result);

    /// Finds the crossings with another mesh.
    ///
    /// \param matrix     takes this mesh into the space of `meshB`. With a singular one nothing crosses
    /// \param progress   advanced. After a cancel the results have some of the crossings
    /// \param resultA    replaced: one entry for each crossing, on a triangle of this mesh. Ordered by its number, then
    ///                   by that of the other triangle
    /// \param resultB    replaced: the same crossings in the same order, on the triangles of `meshB`
    ///
    /// Where the root boxes are apart both results stay as they were. A mesh and itself have all triangles in common;
    /// only those that lie in different planes are said to cross. The tree is searched with each triangle of `meshB`:
    /// calls with small meshes are quick, however large this one is.
    void intersect(const CompactMesh& meshB, const Octree& octreeB, const OctreeTris& octreeTrisB,
                   const znLinear::AffineMatrix& matrix, znUtil::Progress& progress,
                   std::deque<MeshIntersectPair>& resultA, std::deque<MeshIntersectPair>& resultB);
    /// The same without an octree.
    void intersect(const CompactMesh& meshB, const znLinear::AffineMatrix& matrix, znUtil::Progress& progress,
                   std::deque<MeshIntersectPair>& resultA, std::deque<MeshIntersectPair>& resultB);

private:
    zn::ImplPointer<MeshIntersectImpl> m_impl;
};

} // namespace znGeom
