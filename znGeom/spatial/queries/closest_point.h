/// The point of a surface that is nearest to a given point.
///
/// There are two engines on two indexes. `MeshClosestPoint` reads the triangle sets of an `OctreeTris`: the choice for
/// many queries. `meshClosestPoint` needs the vertex octree and the adjacency alone: the choice for a few, or while no
/// triangle sets exist. Distances are kept squared in `double`; where two triangles are exactly equally near, the one
/// that is reached first is kept. No function reports an error: when nothing is nearer than the initial distance, the
/// coordinate stays as it was. That is so for a point with a coordinate that is not a number or beyond `float`, as the
/// indexes are in `float`: nothing is found from there.
#pragma once

#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/octree.h"
#include "znGeom/spatial/trees/triangle_tree.h"

namespace znGeom {

class ClosestPointContext;

/// Finds nearest points using the triangle sets of an octree.
///
/// Two ways lead to the same answers, to the last bit: a walk over the leaves, at some ten microseconds a query, and a
/// `TriangleTree`, at one to four. An instance without a tree walks until that has cost about as much as making one,
/// and then makes one for itself on the process-wide pool; a single query after a build does not pay for a tree, and
/// many queries never cost more than about twice the optimum. Callers that expect many queries pass a tree. Where
/// points lie more than 64 times the size of the mesh away, and for meshes in which one coordinate is 2^146 times
/// another, the walk answers in either case; all other sizes and positions are treated alike.
///
/// Mesh, octree, triangle sets and tree are borrowed and must not change. An instance serves one thread at a time:
/// parallel loops make one per thread, with one tree for all of them, or pass all queries in one call. A copy shares
/// the working memory of its source: it must not outlive it, nor run at the same time. Making an instance costs
/// nothing; walks take four bytes a triangle, a tree of its own takes 45.
class ZNGEOM_API MeshClosestPoint
{
public:
    /// \param octree      over the vertices of `mesh` and their box
    /// \param octreeTris  made from these two by `computeOctreeTris`
    MeshClosestPoint(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris);
    /// \param tree  made from `mesh`
    MeshClosestPoint(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris,
                     const TriangleTree& tree);
    MeshClosestPoint(const CompactMesh&, const Octree&, const OctreeTris&, const TriangleTree&&) = delete;
    MeshClosestPoint(const MeshClosestPoint& other);
    MeshClosestPoint(MeshClosestPoint&& other) noexcept;
    MeshClosestPoint& operator=(const MeshClosestPoint&) = delete;
    ~MeshClosestPoint();

    /// \param coord  receives the nearest place; may be null; untouched when there is none
    /// \return the distance, not squared; the square root of the largest double when there is no triangle, or the point
    ///         is not a number or beyond `float`
    ///
    /// Allocates no memory once the lists of a search have grown to their size.
    double compute(const znLinear::Point& point, MeshCoord* coord);

    /// The same for many points at once, on all threads of a pool: up to twice as fast on each of them, since
    /// neighbouring points are queried one after the other. The answers are those of single queries.
    ///
    /// \param places     one per point, like `coord` above; may be null
    /// \param distances  one per point; may be null
    /// \param progress   may be null
    /// \return false after a cancel: some of the results are then written and others untouched
    bool compute(const znLinear::Point* points, int count, MeshCoord* places, double* distances,
                 znUtil::Progress* progress = nullptr, znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

private:
    zn::ImplPointer<ClosestPointContext> m_context;
};

/// Finds the nearest point by the vertex octree: nearest vertices first, with the triangles around each.
///
/// \param octree          over the vertices of `mesh` and their box
/// \param adjTris         built from the mesh by `meshAdjTris`
/// \param longestEdge     the mesh's longest edge, by `meshLongestEdge`: how far a triangle can reach from its
///                        vertices. The walk continues to leaves at least as far away as this divided by the square
///                        root of two
/// \param maxDistance2    the initial squared distance: only what is strictly nearer is taken
/// \param neighbourBoxes  one box per vertex as `meshComputeNeighbourBBoxes` makes them; with null they are made as
///                        needed
/// \param coord           receives the nearest place; may be null; untouched when nothing is nearer
/// \return the distance, not squared; the square root of `maxDistance2` when nothing is nearer
///
/// About as expensive as a walk of `MeshClosestPoint` where edges are of similar length. Where the longest one is much
/// longer than most, far more leaves lie within its reach; without boxes that costs one pass over the mesh, at some ten
/// nanoseconds a triangle, besides what it takes to detect this. Re-entrant: any number of threads share the arguments.
ZNGEOM_API double meshClosestPoint(const CompactMesh& mesh, const Octree& octree, const MeshAdjTris& adjTris,
                                   const znLinear::Point& point, double longestEdge, double maxDistance2,
                                   const BoundingBox* neighbourBoxes, MeshCoord* coord);

/// The same without a limit. Measures the longest edge first, at every call: linear in the number of triangles.
ZNGEOM_API double meshClosestPoint(const CompactMesh& mesh, const Octree& octree, const MeshAdjTris& adjTris,
                                   const znLinear::Point& point, MeshCoord* coord);

/// \return the squared distance to the nearest vertex; the largest double for an empty octree, and from a point beyond
///         `float`. Prints one line.
ZNGEOM_API double meshClosestVertex2(const CompactMesh& mesh, const Octree& octree, const znLinear::Point& point);

/// The nearest place of one triangle.
/// \param vertices, triangles  the mesh's raw arrays
/// \return invalid when a position is not a number, or for a negative triangle number
ZNGEOM_API MeshCoord meshTriClosestPt(const float* vertices, const int* triangles, int triangle,
                                      const znLinear::Point& point);

/// The surface place that is nearest to where a line passes level with a point: the line's point on the plane through
/// `point` at right angles to it. The other arguments are those of `meshClosestPoint`.
/// \return invalid for a mesh without triangles, and where the line passes beyond `float`
ZNGEOM_API MeshCoord meshRayClosestPt(const CompactMesh& mesh, double longestEdge, const Octree& octree,
                                      const MeshAdjTris& adjTris, const znLinear::Line& line,
                                      const znLinear::Point& point);

} // namespace znGeom
