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

/// The box that is sought, and what has been found.
struct Search
{
    float low[3], high[3];
    std::vector<int>& found;
    size_t count = 0;
};

/// Appends `numbers[i]`, for each box i of a group that meets the box, and returns how many there are. Room for eight.
ZNGEOM_INLINE int appendMeeting(const BoxGroup& group, const Search& search, const int* numbers, int* end)
{
    int meets[width];
    for (int i = 0; i < width; ++i)
        meets[i] = (group.low[0][i] <= search.high[0]) & (search.low[0] <= group.high[0][i]) &
                   (group.low[1][i] <= search.high[1]) & (search.low[1] <= group.high[1][i]) &
                   (group.low[2][i] <= search.high[2]) & (search.low[2] <= group.high[2][i]);
    int count = 0;
    for (int i = 0; i < width; ++i) {
        end[count] = numbers[i];
        count += meets[i];
    }
    return count;
}

ZNGEOM_INLINE int pushMeeting(const BoxGroup& group, const Search& search, int first, int* stack)
{
    int numbers[width];
    for (int i = 0; i < width; ++i) numbers[i] = first + i;
    return appendMeeting(group, search, numbers, stack);
}

ZNGEOM_CLONES void findIn(const BoxTree& tree, Search& search)
{
    int stack[BoxHierarchy::stackSize];
    stack[0] = 0;
    for (int size = 1; size > 0;) {
        const int node = stack[--size];
        int* const top = stack + size;
        if (node < tree.firstLowest) {
            size += pushMeeting(tree.nodes[static_cast<size_t>(node)], search, width * node + 1, top);
            continue;
        }
        int count = pushMeeting(tree.nodes[static_cast<size_t>(node)], search, width * (node - tree.firstLowest), top);
        while (count-- > 0) {
            const BoxTree::Leaf& leaf = tree.leaves[static_cast<size_t>(top[count])];
            if (search.count + width > search.found.size()) search.found.resize(2 * search.found.size() + width);
            search.count += static_cast<size_t>(
                appendMeeting(leaf.boxes, search, leaf.triangles, search.found.data() + search.count));
        }
    }
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

std::span<const int> BoxSearch::find(const BoundingBox& box)
{
    Search search{{box.minX, box.minY, box.minZ}, {box.maxX, box.maxY, box.maxZ}, m_found};
    if (m_tree.numTriangles > 0) findIn(m_tree, search);
    return {m_found.data(), search.count};
}

} // namespace znGeom::internal
