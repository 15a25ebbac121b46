/// `znGeom::MeshPtInside`: whether points lie inside a closed surface.
#pragma once

#include "znGeom/spatial/queries/closest_point.h"

namespace znGeom {

/// Decides by the normal of the surface at the nearest place: a point is inside when that place lies ahead of it along
/// the normal. Sound for closed surfaces that are wound consistently outward and have vertex normals (without any, the
/// triangle's is taken). Near a fold that is narrower than the interpolated normals can tell, the answer may be wrong,
/// as it may be near the border of an open surface.
///
/// Everything is borrowed and must not change. An instance serves one thread at a time: parallel loops make one per
/// thread, with one tree for all. A copy shares the working memory of its source: it must not outlive it, nor run at
/// the same time. Costs and memory are those of `MeshClosestPoint`.
class ZNGEOM_API MeshPtInside
{
public:
    enum Result : int { Inside, Outside, OnSurface };

    /// \param octree      over the vertices of `mesh` and their box
    /// \param octreeTris  made from these two by `computeOctreeTris`
    /// \param tolerance   nearer than this is on the surface; a point at exactly this distance is not
    MeshPtInside(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris, double tolerance);
    /// \param tree  made from `mesh`
    MeshPtInside(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris, const TriangleTree& tree,
                 double tolerance);
    MeshPtInside(const CompactMesh&, const Octree&, const OctreeTris&, const TriangleTree&&, double) = delete;

    /// A point beyond the mesh's box is outside, however near the surface it is, and however far away.
    Result evaluate(const znLinear::Point& point);

private:
    const CompactMesh* m_mesh;
    MeshClosestPoint m_closest;
    BoundingBox m_box;
    double m_tolerance;
};

} // namespace znGeom
