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

/// The numbers of two triangles.
struct TrianglePair
{
    int first, second;
};

/// Finds the triangles of a tree whose boxes overlap or touch. Keeps its memory from search to search. What is found is
/// good until the next search of the same kind, and in an order that depends on the size of the pool that the tree was
/// built on.
class BoxSearch
{
public:
    explicit BoxSearch(const BoxTree& tree) : m_tree(tree) {}

    /// Those that meet a box.
    std::span<const int> findMeeting(const BoundingBox& box);

    /// Pairs that meet each other, of a triangle in a leaf and one in the same or an earlier leaf: over all leaves,
    /// each pair once. \param leaf  its number
    std::span<const TrianglePair> findPairs(int leaf);

private:
    const BoxTree& m_tree;
    // Larger than what was found.
    std::vector<int> m_triangles;
    std::vector<TrianglePair> m_pairs;
};

} // namespace znGeom::internal
