#include "znGeom/spatial/trees/internal/box_tree.h"

#include <algorithm>

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/mesh/triangle_box.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"
#include "znGeom/spatial/trees/internal/triangle_order.h"

namespace znGeom::internal {

namespace {

constexpr int width = BoxGroup::width;

/// How many leaves ahead the triangles are prefetched.
constexpr int leavesAhead = 2;

/// A box, coordinate by coordinate.
struct Sides
{
    float low[3], high[3];

    static Sides of(const BoxGroup& group, int place)
    {
        return {{group.low[0][place], group.low[1][place], group.low[2][place]},
                {group.high[0][place], group.high[1][place], group.high[2][place]}};
    }
};

/// How far each box of a group lies from a box, along the axis on which it is farthest: not above 0 for those that the
/// box overlaps or touches.
ZNGEOM_INLINE void measureGaps(const BoxGroup& group, const Sides& box, float* __restrict gaps)
{
    for (int i = 0; i < width; ++i) {
        const float x = greater(group.low[0][i] - box.high[0], box.low[0] - group.high[0][i]);
        const float y = greater(group.low[1][i] - box.high[1], box.low[1] - group.high[1][i]);
        const float z = greater(group.low[2][i] - box.high[2], box.low[2] - group.high[2][i]);
        gaps[i] = greater(greater(x, y), z);
    }
}

/// A list with room for more than it holds.
template <typename T>
struct Found
{
    std::vector<T>& list;
    size_t count = 0;

    /// Where to write the next ones, with room for a group.
    ZNGEOM_INLINE T* end()
    {
        if (count + width > list.size()) makeRoom();
        return list.data() + count;
    }
    void makeRoom() { list.resize(2 * list.size() + width); }
};

/// A node that is waiting to be visited.
struct Waiting
{
    int node;
    int firstLeaf; ///< the first one below it
    int span;      ///< how many leaves are below each of its children
};

Waiting rootOf(const BoxTree& tree)
{
    Waiting root{0, 0, 1};
    for (int node = 0; node < tree.firstLowest; node = width * node + 1) root.span *= width;
    return root;
}

/// Puts those children on the stack that a box meets and that have a leaf up to the last one below them.
/// \return how many
ZNGEOM_INLINE int pushMeeting(const BoxTree& tree, const Waiting& parent, const Sides& box, int lastLeaf, Waiting* top)
{
    float gaps[width];
    measureGaps(tree.nodes[static_cast<size_t>(parent.node)], box, gaps);
    const int numUsable = std::min(width, (lastLeaf - parent.firstLeaf) / parent.span + 1);
    int count = 0;
    for (int i = 0; i < numUsable; ++i) {
        top[count] = {width * parent.node + 1 + i, parent.firstLeaf + i * parent.span, parent.span / width};
        count += gaps[i] <= 0;
    }
    return count;
}

/// Calls `visit(leaf)` for the leaves up to the last one that a box meets.
template <typename Visit>
ZNGEOM_INLINE void forEachLeaf(const BoxTree& tree, const Waiting& root, const Sides& box, int lastLeaf,
                               const Visit& visit)
{
    Waiting stack[BoxHierarchy::stackSize];
    stack[0] = root;
    for (int size = 1; size > 0;) {
        const Waiting parent = stack[--size];
        const int count = pushMeeting(tree, parent, box, lastLeaf, stack + size);
        if (parent.span > 1)
            size += count;
        else
            for (int i = 0; i < count; ++i) visit(stack[size + i].firstLeaf);
    }
}

ZNGEOM_CLONES void findMeeting(const BoxTree& tree, const Waiting& root, const Sides& box, Found<int>& found)
{
    forEachLeaf(
        tree, root, box, tree.numLeaves - 1, [&](int number) __attribute__((always_inline)) {
            const BoxTree::Leaf& leaf = tree.leaves[static_cast<size_t>(number)];
            float gaps[width];
            measureGaps(leaf.boxes, box, gaps);
            int* const end = found.end();
            int count = 0;
            for (int i = 0; i < width; ++i) {
                end[count] = leaf.triangles[i];
                count += gaps[i] <= 0;
            }
            found.count += static_cast<size_t>(count);
        });
}

/// Appends the pairs of a triangle in place `place` of a leaf with the first `numOthers` of another leaf.
ZNGEOM_INLINE void appendPairs(const BoxTree::Leaf& leaf, int place, const BoxTree::Leaf& other, int numOthers,
                               Found<TrianglePair>& found)
{
    float gaps[width];
    measureGaps(other.boxes, Sides::of(leaf.boxes, place), gaps);
    TrianglePair* const end = found.end();
    int count = 0;
    for (int i = 0; i < numOthers; ++i) {
        end[count] = {leaf.triangles[place], other.triangles[i]};
        count += gaps[i] <= 0;
    }
    found.count += static_cast<size_t>(count);
}

ZNGEOM_CLONES void findPairs(const BoxTree& tree, const Waiting& root, int number, Found<TrianglePair>& found)
{
    const BoxTree::Leaf& leaf = tree.leaves[static_cast<size_t>(number)];
    const auto boxOf = [&tree](int which) __attribute__((always_inline))
    {
        return Sides::of(tree.nodes[static_cast<size_t>(tree.firstLowest + which / width)], which % width);
    };
    forEachLeaf(
        tree, root, boxOf(number), number, [&](int which) __attribute__((always_inline)) {
            const BoxTree::Leaf& other = tree.leaves[static_cast<size_t>(which)];
            float gaps[width];
            measureGaps(leaf.boxes, boxOf(which), gaps);
            for (int i = 0; i < width; ++i)
                if (gaps[i] <= 0) appendPairs(leaf, i, other, which == number ? i : width, found);
        });
}

} // namespace

BoxTree::BoxTree(const CompactMesh& mesh, znUtil::ThreadPool& pool)
{
    const TriangleOrder order = orderTriangles(mesh, pool);
    numTriangles = order.count;
    if (numTriangles == 0) return;
    box = order.box;
    makeNodes(numTriangles);
    leaves = makeAlignedArray<Leaf>(static_cast<size_t>(numLeaves));
    const int* const numbers = order.numbers.get();
    znUtil::parallelFor(pool, numNodes - firstLowest, [&](znUtil::Slice slice, int) {
        for (int number = width * slice.begin; number < width * slice.end; ++number) {
            BoxGroup& node = nodes[static_cast<size_t>(firstLowest + number / width)];
            if (number >= numLeaves) {
                node.setNone(number % width);
                continue;
            }
            for (int i = width * (number + leavesAhead); i < width * (number + leavesAhead + 1); ++i)
                if (i < numTriangles) znUtil::prefetch(&mesh.getTriangles()[numbers[i]]);
            Leaf& leaf = leaves[static_cast<size_t>(number)];
            fillLeaf(mesh, numbers + width * number, std::min(width, numTriangles - width * number), leaf);
            node.setAround(number % width, leaf.boxes);
        }
    });
    fillUpperNodes();
}

void BoxTree::fillLeaf(const CompactMesh& mesh, const int* numbers, int count, Leaf& leaf) const
{
    const MeshVertex* const vertices = mesh.getVertices();
    const MeshTriangle* const triangles = mesh.getTriangles();
    for (int i = 0; i < count; ++i)
        for (const int corner : triangles[numbers[i]].corners) znUtil::prefetch(&vertices[corner]);
    for (int i = 0; i < width; ++i) {
        leaf.triangles[i] = i < count ? numbers[i] : -1;
        if (i < count)
            leaf.boxes.set(i, boxAround(vertices, triangles[numbers[i]]));
        else
            leaf.boxes.setNone(i);
    }
}

std::span<const int> BoxSearch::findMeeting(const BoundingBox& box)
{
    Found<int> found{m_triangles};
    const Sides sides{{box.minX, box.minY, box.minZ}, {box.maxX, box.maxY, box.maxZ}};
    if (m_tree.numTriangles > 0) internal::findMeeting(m_tree, rootOf(m_tree), sides, found);
    return {m_triangles.data(), found.count};
}

std::span<const TrianglePair> BoxSearch::findPairs(int leaf)
{
    Found<TrianglePair> found{m_pairs};
    internal::findPairs(m_tree, rootOf(m_tree), leaf, found);
    return {m_pairs.data(), found.count};
}

} // namespace znGeom::internal
