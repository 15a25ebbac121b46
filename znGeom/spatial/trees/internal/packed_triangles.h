/// The tree over triangles in which nearest points are searched.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/internal/box_hierarchy.h"
#include "znGeom/spatial/trees/internal/search_frame.h"

namespace znGeom::internal {

/// The leaves hold copies of the corners of their triangles. All coordinates are those of the frame.
struct PackedTriangles : BoxHierarchy
{
    /// A place without a triangle holds one that is beyond reach, with the number -1.
    struct alignas(64) Leaf
    {
        float corners[9][width]; ///< x, y and z of the first corner, of the second, of the third
        int triangles[width];
    };

    /// Triangles with a corner that is not finite are left out.
    PackedTriangles(const CompactMesh& mesh, znUtil::ThreadPool& pool);

    /// Places are counted leaf by leaf.
    const Leaf& leafOf(int place) const { return leaves[static_cast<size_t>(place / width)]; }
    int triangleAt(int place) const { return leafOf(place).triangles[place % width]; }
    /// Coordinate i of 9 of a triangle, as in the mesh.
    double cornerAt(int place, int i) const { return frame.fromFrame(leafOf(place).corners[i][place % width], i % 3); }

    SearchFrame frame;
    BoundingBox box;      ///< of the triangles, in the mesh's coordinates
    int numTriangles = 0; ///< those in the tree
    bool isExact = true;  ///< whether the mesh's coordinates can be recovered from those of the leaves
    AlignedArray<Leaf> leaves{nullptr, {0}};

private:
    void fillLeaves(const CompactMesh& mesh, const int* order, znUtil::ThreadPool& pool);
    bool fillLeaf(const CompactMesh& mesh, const int* order, int count, Leaf& leaf) const;
};

} // namespace znGeom::internal
