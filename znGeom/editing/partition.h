/// Dividing a mesh into connected parts of about equal size.
#pragma once

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

class MeshPartitionImpl;

/// Divides the triangles of a mesh into parts whose sizes differ by one at most.
///
/// Each part is grown across edges from the triangle that has the fewest neighbours left, the lowest of them, so that
/// parts nibble at the rim of what remains and leave no islands behind; where a part can grow no further it goes on
/// from the next such triangle. After Farhat, "A simple and efficient automatic FEM domain decomposer" (1988).
///
/// A copy shares the implementation, does not own it and must not outlive its source. Mesh and adjacency are not owned
/// and must stay as they are.
class ZNGEOM_API MeshPartition
{
public:
    /// \param adjTris  built from the mesh by `meshAdjTris`
    /// \param parts    below 1 counts as 1; no more parts come than there are triangles
    MeshPartition(const CompactMesh& mesh, const MeshAdjTris& adjTris, int parts);
    MeshPartition(const MeshPartition& other) = default;
    MeshPartition& operator=(const MeshPartition&) = delete;

    /// \param subsets  replaced: the parts, each triangle in one of them, triangles and vertices ascending, the
    ///                 vertices those that the triangles use. None for a mesh without triangles, but one that has
    ///                 polygons is one part with all vertices
    ///
    /// Linear, but for edges with very many triangles, which count by their square. Runs on the calling thread; the
    /// same in every run.
    void compute(zn::list<zn::Reference<MeshSubset>>& subsets);

private:
    zn::ImplPointer<MeshPartitionImpl> m_impl;
};

/// Finds the subset of each triangle.
///
/// \param membership  replaced: per triangle the number of its subset in the list, of the last one where there are
///                    several, -1 where there is none; its range is the number of subsets
ZNGEOM_API void meshTriSubsetMembership(const CompactMesh& mesh, const zn::list<zn::Reference<MeshSubset>>& subsets,
                                        Remap& membership);

/// Finds the subsets of each vertex.
///
/// \param membership  replaced: per vertex the numbers of the subsets that list it, ascending, each once
ZNGEOM_API void meshVertSubsetMembership(const CompactMesh& mesh, const zn::list<zn::Reference<MeshSubset>>& subsets,
                                         ArrayOfSets& membership);

} // namespace znGeom
