/// `znGeom::MeshDeviation`: how far the vertices of one mesh lie from another.
#pragma once

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/octree.h"
#include "znGeom/spatial/trees/triangle_tree.h"

namespace znGeom {

class MeshDeviationImpl;

/// Measures the distance of each vertex of a source mesh from the surface of a target mesh, in world units: positive on
/// the side to which the vertex's normal points. One object measures any number of sources, or one as it changes; it
/// runs one `calculate` at a time. Each mesh is placed by a matrix of its own, and neither is changed or copied.
///
/// Everything given to the constructors is borrowed, and must not change as long as the object is used. A copy shares
/// the state of its source, and must not outlive it.
class ZNGEOM_API MeshDeviation
{
public:
    /// What the result of a vertex is that was left out.
    static constexpr float notMeasured = std::numeric_limits<float>::max();

    /// \param targetMatrix  places the target; nearest points are searched in the target's own space, so that a matrix
    ///                      that stretches or shears does not give the nearest point in the world
    /// \param octree        over the vertices of `target` and their box
    /// \param octreeTris    made from these two by `computeOctreeTris`
    /// \param progress      of each `calculate`, which may be cancelled through it
    MeshDeviation(const CompactMesh& target, const znLinear::AffineMatrix& targetMatrix, const Octree& octree,
                  const OctreeTris& octreeTris, znUtil::Progress& progress);
    /// \param tree  made from `target`; without one, the first `calculate` makes one where that pays
    MeshDeviation(const CompactMesh& target, const znLinear::AffineMatrix& targetMatrix, const Octree& octree,
                  const OctreeTris& octreeTris, const TriangleTree& tree, znUtil::Progress& progress);
    MeshDeviation(const CompactMesh&, const znLinear::AffineMatrix&, const Octree&, const OctreeTris&,
                  const TriangleTree&&, znUtil::Progress&) = delete;

    /// \param source        should have vertex normals; without them no distance is negative
    /// \param sourceMatrix  places the source
    /// \param output        room for one float per vertex of the source. 0 on the surface; infinite where there is no
    ///                      nearest point, which is so for a target without triangles, and where the matrices take a
    ///                      vertex beyond `float` in the target's space. After a cancel the first part of each thread's
    ///                      vertices is written, and the rest untouched
    /// \param selectedOnly  vertices that are not selected get `notMeasured`, unless the selection has no bits at all;
    ///                      those beyond its last bit are not selected
    /// \param reverseSign   positive means behind the normal
    ///
    /// About a microsecond a vertex, less where consecutive vertices are neighbours; on all threads of the pool, with
    /// the same bits for any number of them. A cancel is seen within 200 vertices by every thread; whether there was
    /// one the `Progress` says. Prints one line, and one for each thread.
    void calculate(const CompactMesh* source, const znLinear::AffineMatrix& sourceMatrix, float* output,
                   bool selectedOnly, bool reverseSign, znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

private:
    zn::ImplPointer<MeshDeviationImpl> m_impl;
};

} // namespace znGeom
