/// Triangles that repeat another one, or that have collapsed: finding them and taking them out.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// The triangles that `meshDuplicateTris` found, by their numbers. One can be in `duplicates` and in one of the other
/// two lists as well.
class ZNGEOM_API MeshDuplicateTrisResult
{
public:
    /// Those with the same three corners as a triangle of lower number, whichever way round: the lowest of several
    /// equal ones is not listed. In the order of their lowest corners, then the middle ones, then the highest, equal
    /// ones ascending.
    zn::vector<int> duplicates;
    /// Those that name a vertex twice, ascending.
    zn::vector<int> repeatedCorners;
    /// Those of three different vertices, two of which have exactly the same position, ascending. There is no tolerance
    /// on purpose: these are what welding left, not triangles that are merely small.
    zn::vector<int> coincidentCorners;

    /// Whether there is a triangle in any of the lists.
    explicit operator bool() const
    {
        return !duplicates.empty() || !repeatedCorners.empty() || !coincidentCorners.empty();
    }

    /// Lists the triangles of all three lists.
    ///
    /// \param mesh       the one in which they were found
    /// \param triangles  replaced: each triangle once, ascending
    void getBadTriangles(const CompactMesh& mesh, zn::vector<int>& triangles) const;
};

/// Finds the triangles that repeat another one, name a vertex twice, or have two corners in the same place.
///
/// \param result  replaced
/// \param pool    on which it runs; the result is the same on any
/// \return whether there is one
///
/// Corners are compared by their vertex numbers with those of other triangles, and by position only among themselves:
/// two triangles of different vertices are no duplicates, wherever the vertices lie. +0 equals -0, NaN equals nothing.
/// Linear where few triangles have the same lowest corner, n log n in those of one vertex.
ZNGEOM_API bool meshDuplicateTris(const CompactMesh& mesh, MeshDuplicateTrisResult& result,
                                  znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

/// Deletes the triangles that were found, and the vertices that only they used.
///
/// \param adjacency  built from the mesh by `meshAdjTris`
/// \param result     found in the mesh by `meshDuplicateTris`; when it is empty nothing happens. The form without it
///                   finds it itself
///
/// They are added to the mesh's selection of triangles, which is then deleted as `MeshDeleteSelected` does: what the
/// caller had selected before goes too. One `TopologyChanged` is reported. Linear; runs on the calling thread.
ZNGEOM_API void meshRemoveDuplicateTris(CompactMesh& mesh, const MeshAdjTris& adjacency,
                                        const MeshDuplicateTrisResult& result);
ZNGEOM_API void meshRemoveDuplicateTris(CompactMesh& mesh, const MeshAdjTris& adjacency);

} // namespace znGeom
