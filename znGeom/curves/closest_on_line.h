/// `znGeom::MeshClosestPtOnLine`: the nearest point of a polyline that runs along mesh edges.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace znGeom {

class MeshClosestPtOnLineImpl;

/// Finds nearest points on lines along the edges of a mesh, for points close to the surface.
///
/// Keeps a copy of the triangles along the lines, with an octree of its own. The mesh and its adjacency are borrowed
/// and must not change. A copy shares the working data of its source: it must not outlive it. Any number of threads may
/// query one instance.
class ZNGEOM_API MeshClosestPtOnLine
{
public:
    /// \param adjTris  built from the mesh by `meshAdjTris`
    /// \param lines    consecutive vertices are joined by an edge of the mesh; pairs that are not joined are not part
    ///                 of the line
    ///
    /// Linear in the size of the mesh.
    MeshClosestPtOnLine(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshSequence& lines);
    MeshClosestPtOnLine(const MeshClosestPtOnLine& other) = default;
    MeshClosestPtOnLine(MeshClosestPtOnLine&& other) noexcept = default;
    MeshClosestPtOnLine& operator=(const MeshClosestPtOnLine&) = delete;

    /// \return the place on the line that is nearest to `point`, in a triangle of the mesh next to it
    ///
    /// The line is searched in a box about the point and the surface point nearest to it, widened by half their
    /// distance: a line more than about twice as far away as the surface is not seen. A point on the surface, within
    /// `epsilonTolFlt`, gives a line vertex of the triangle that it lies on: the one on which it lies itself, otherwise
    /// the last one in corner order. Where no part of the line is found, the result is the nearest place of the kept
    /// triangles, and its triangle number is one among those and not in the mesh. Without such triangles it is invalid.
    MeshCoord operator()(const znLinear::Point& point) const;

private:
    zn::ImplPointer<MeshClosestPtOnLineImpl> m_impl;
};

} // namespace znGeom
