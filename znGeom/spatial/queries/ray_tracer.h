/// `znGeom::RayTracer`: casting many rays at a mesh.
#pragma once

#include <memory>

#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/shapes/ray.h"
#include "znGeom/spatial/trees/octree.h"
#include "znGeom/spatial/trees/triangle_tree.h"

namespace znGeom {

/// Casts one ray after another, for the nearest triangle that each hits or for whether there is one.
///
/// A hit is one of `intersectRayTriangle` ahead of the origin by more than `epsilonTolFlt`, the same for every way that
/// leads to it. What that function does not see, no cast sees: a triangle is invisible where twice its area, times the
/// length of the direction, times the cosine between the direction and the normal, is at most 1e-6. In a mesh a quarter
/// of a unit large with seventy thousand triangles, a third of the hits are lost for directions of unit length. Callers
/// with such meshes make the direction longer, a thousand times or more: parameters become as much smaller, and the
/// smallest one that counts, 1e-7, as much larger in units of the mesh. Where that is too coarse they cast in a copy
/// that `meshTransform` has scaled up.
///
/// Two ways lead to the same answers: a walk over the leaves of the octree, at some ten microseconds a cast, and a
/// `TriangleTree`, at about one. An instance without a tree walks until that has cost about as much as making one,
/// and then makes one for itself on the process-wide pool. Callers that expect many casts pass a tree, which serves
/// nearest points as well.
///
/// All arguments are borrowed and must not change. An instance serves one thread at a time: parallel loops make one per
/// thread, with one tree for all of them. No cast allocates memory, but for those that make a tree or walk first; a
/// walk takes four bytes a triangle.
class ZNGEOM_API RayTracer
{
public:
    /// \param octree      over the vertices of the mesh and their box
    /// \param octreeTris  made from these two by `computeOctreeTris`
    RayTracer(const Octree& octree, const OctreeTris& octreeTris, const CompactMesh* mesh);
    /// \param tree  made from the mesh
    RayTracer(const Octree& octree, const OctreeTris& octreeTris, const CompactMesh* mesh, const TriangleTree& tree);
    RayTracer(const Octree&, const OctreeTris&, const CompactMesh*, const TriangleTree&&) = delete;
    RayTracer(const RayTracer&) = delete;
    RayTracer& operator=(const RayTracer&) = delete;
    ~RayTracer();

    /// Whether to look for the nearest hit, or to stop at any; at first the latter. May change between casts.
    void setFindNearestHit(bool findNearest) { m_findNearest = findNearest; }

    /// \param direction  of any length, which is the unit of distances
    /// \return whether the ray hits a triangle
    bool intersect(const znLinear::PointFlt& origin, const znLinear::Vector& direction);

    /// How far away the last cast hit, in lengths of its direction. The largest float when it missed, and whenever it
    /// did not look for the nearest hit.
    double intersectionDist() const { return m_distance; }
    /// Where the last cast hit: the triangle, of several at exactly the same distance the one with the lowest number,
    /// and the weights of its corners. Invalid whenever the distance is the largest float.
    const MeshCoord& intersectionCoord() const { return m_coord; }

private:
    struct Engine;

    std::unique_ptr<Engine> m_engine;
    MeshCoord m_coord;
    double m_distance = static_cast<double>(BoundingBox::largest);
    bool m_findNearest = false;
};

} // namespace znGeom
