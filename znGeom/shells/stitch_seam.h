/// `znGeom::MeshStitchSeam`: sewing two boundary paths of a half-edge mesh together.
///
///     MeshStitchSeam seam(topoMesh);
///     seam.addCallback([&](TopoMeshVertex v) { scope.removeVertex(v); });
///     seam.stitch(left, right, acrossLeft, acrossRight, 0.05, true);
#pragma once

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/signals/signal.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

class MeshStitchSeamImpl;

/// Zips two boundary paths: vertices are added until both have as many steps, the vertices of one are moved to those of
/// the other, and the half-edges are joined pair by pair. The path of more steps stays where it is.
///
/// Facing boundaries run in opposite directions: path A is followed forward along its half-edges, path B backward. Each
/// vertex of the mesh that is about to disappear is sent to the functions connected to this object. The mesh is not
/// owned and must outlive this; a copy shares the state of its source and has no connections. On the calling thread.
class ZNGEOM_API MeshStitchSeam : public znRTB::SignalArg<TopoMeshVertex>
{
public:
    explicit MeshStitchSeam(TopoMesh& mesh);
    MeshStitchSeam(const MeshStitchSeam& other);
    MeshStitchSeam& operator=(const MeshStitchSeam&) = delete;
    ~MeshStitchSeam() override;

    /// Stitches the boundary path from `a0` forward to `a1` with that from `b0` backward to `b1`. `a0` may be `b0`, and
    /// `a1` may be `b1`.
    ///
    /// \param tolerance  a fraction of an edge, from 0 to 1: a vertex that comes to lie this close to the end of an
    ///                   edge across is joined with that end; elsewhere the edge is divided there. Below a millionth,
    ///                   or not a number, it is a millionth
    /// \param merge      whether to join the half-edges; otherwise the paths only end up in the same places
    ///
    /// Where the two sides turn away from each other by more than 85 degrees, an edge of the side that is ahead is
    /// contracted, unless that would change the topology of the surface. No edge gets length zero by this. Two vertices
    /// that an edge joins are not merged, since that edge would end where it begins, nor two that have a neighbour in
    /// common off the seam, since there would be two edges in one place: the seam begins or ends one step
    /// further in, or stays open there.
    ///
    /// Nothing changes, and nobody is told, when one of the paths doesn't lead along a boundary, has no length in
    /// steps, both have a half-edge in common, or a face at one of them reaches a vertex within the other. Otherwise a
    /// `TopoMeshModification` is reported. Linear in the steps and in the valence of the vertices on the way.
    void stitch(TopoMeshVertex a0, TopoMeshVertex a1, TopoMeshVertex b0, TopoMeshVertex b1, double tolerance,
                bool merge);
    /// Stitches the boundary loops through `a` and through `b`, half by half: `a` meets the nearest vertex of the other
    /// loop, and so does the vertex half way round from `a`. The first half of the loop of more steps stays in place,
    /// and in the second half that of the other one.
    ///
    /// Nothing changes when one of the two is not on a boundary, when both are on one loop, or when both places of the
    /// one loop are nearest to the same vertex of the other.
    void stitchCircular(TopoMeshVertex a, TopoMeshVertex b, double tolerance, bool merge);

    /// Whether the last stitch kept path A in place, or the loop of `a`. True before the first.
    bool preservedA() const;
    /// Whether the last stitch found its paths and zipped them, and joined every pair if that was asked for.
    bool isComplete() const;

private:
    zn::ImplPointer<MeshStitchSeamImpl> m_impl;
};

} // namespace znGeom
