/// The tree over the boxes of triangles in which searches for what may touch a triangle run.
#pragma once

#include <span>
#include <vector>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/trees/internal/box_hierarchy.h"

namespace znGeom::internal {

/// All coordinates are those of the mesh. Immutable once built, and read by any number of threads.
struct BoxTree : BoxHierarchy
{
    /// A place without a triangle holds the number -1.
    struct alignas(64) Leaf
    {
        BoxGroup boxes;
        int triangles[width];
    };

    /// A snapshot of the mesh; triangles with a corner that is not finite are left out. n log n.
    BoxTree(const CompactMesh& mesh, znUtil::ThreadPool& pool);

    int numTriangles = 0; ///< those in the tree
    BoundingBox box;      ///< around them
    AlignedArray<Leaf> leaves{nullptr, {0}};

private:
    void fillLeaf(const CompactMesh& mesh, const int* numbers, int count, Leaf& leaf) const;
};

/// Finds the triangles of a tree whose boxes overlap or touch a box. Keeps its memory from search to search.
class BoxSearch
{
public:
    explicit BoxSearch(const BoxTree& tree) : m_tree(tree) {}

    /// \return their numbers, good until the next search; in the order of the tree, which depends on the size of the
    ///         pool that it was built on
    std::span<const int> find(const BoundingBox& box);

private:
    const BoxTree& m_tree;
    std::vector<int> m_found; ///< larger than what was found
};

} // namespace znGeom::internal
