#include "znGeom/spatial/queries/internal/nearest_candidates.h"

#include <cmath>
#include <limits>
#include <utility>

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/spatial/queries/internal/search_key.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

namespace {

using Node = BoxGroup;
using Leaf = PackedTriangles::Leaf;
using Candidate = NearestCandidates::Candidate;
constexpr int width = PackedTriangles::width;

/// From below, the squared distances of the boxes of a node's children.
ZNGEOM_INLINE void boundChildren(const Node& node, const float* q, float* __restrict lower2)
{
    for (int i = 0; i < width; ++i) {
        const float x = outside(q[0], node.low[0][i], node.high[0][i]);
        const float y = outside(q[1], node.low[1][i], node.high[1][i]);
        const float z = outside(q[2], node.low[2][i], node.high[2][i]);
        lower2[i] = x * x + y * y + z * z;
    }
}

ZNGEOM_INLINE void boundTriangles(const Leaf& leaf, const float* q, float* __restrict lower2, float* __restrict upper2)
{
    for (int i = 0; i < width; ++i) {
        SeenTriangle seen;
        for (int axis = 0; axis < 3; ++axis) {
            seen.a[axis] = leaf.corners[axis][i] - q[axis];
            seen.b[axis] = leaf.corners[axis + 3][i] - q[axis];
            seen.c[axis] = leaf.corners[axis + 6][i] - q[axis];
        }
        boundTriangle(seen, lower2[i], upper2[i]);
    }
}

/// What a search has found.
struct Found
{
    std::vector<Candidate>& list;
    size_t count;
    float reach2; ///< what is beyond cannot be nearest
    float loss;
};

void makeRoom(Found& found) { found.list.resize(2 * found.list.size() + width); }

/// From below and at little cost, the least squared distance of the boxes of a leaf's triangles: it saves testing more
/// than half of the leaves that a search reaches.
ZNGEOM_INLINE float boundByBoxes(const Leaf& leaf, const float* q)
{
    float lower2[width];
    for (int i = 0; i < width; ++i) {
        lower2[i] = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const float a = leaf.corners[axis][i], b = leaf.corners[axis + 3][i], c = leaf.corners[axis + 6][i];
            const float distance = outside(q[axis], lesser(lesser(a, b), c), greater(greater(a, b), c));
            lower2[i] += distance * distance;
        }
    }
    float least = lower2[0];
    for (int i = 1; i < width; ++i) least = lesser(lower2[i], least);
    return least;
}

ZNGEOM_INLINE void testLeaf(const Leaf& leaf, int number, const float* q, Found& found)
{
    if (boundByBoxes(leaf, q) > found.reach2) return;
    float lower2[width], upper2[width];
    boundTriangles(leaf, q, lower2, upper2);
    float least = upper2[0];
    for (int i = 1; i < width; ++i) least = lesser(upper2[i], least);
    const float reach = std::sqrt(least) + found.loss;
    found.reach2 = lesser(reach * reach * 1.000001f, found.reach2);
    if (found.count + width > found.list.size()) makeRoom(found);
    Candidate* next = found.list.data() + found.count;
    for (int i = 0; i < width; ++i) {
        *next = {lower2[i], width * number + i};
        next += lower2[i] <= found.reach2;
    }
    found.count = static_cast<size_t>(next - found.list.data());
}

/// Puts the children that are within reach on the stack, the nearest one last and the rest as they come: by the time it
/// is their turn, most are beyond reach, and not worth the mispredicted branches of a sort.
/// \return how many
ZNGEOM_INLINE int pushChildren(const Node& node, int firstNumber, const float* q, float reach2, SearchKey* top)
{
    float lower2[width];
    boundChildren(node, q, lower2);
    SearchKey least = std::numeric_limits<SearchKey>::max();
    int count = 0, leastAt = 0;
    for (int i = 0; i < width; ++i) {
        const SearchKey key = makeKey(lower2[i], firstNumber + i);
        top[count] = key;
        leastAt = key < least ? count : leastAt;
        least = key < least ? key : least;
        count += lower2[i] <= reach2;
    }
    if (count > 1) std::swap(top[leastAt], top[count - 1]);
    return count;
}

/// Depth first, the nearest child first. What a child leads to is prefetched, since it will be needed a little later.
ZNGEOM_CLONES void findCandidates(const PackedTriangles& tree, const float* query, Found& found)
{
    const Node* const nodes = tree.nodes.get();
    const Leaf* const leaves = tree.leaves.get();
    const int firstLowest = tree.firstLowest;
    const float q[3] = {query[0], query[1], query[2]};
    SearchKey stack[BoxHierarchy::stackSize];
    stack[0] = 0;
    for (int size = 1; size > 0;) {
        const SearchKey key = stack[--size];
        if (boundOf(key) > found.reach2) continue;
        const int node = numberOf(key);
        SearchKey* const children = stack + size;
        if (node < firstLowest) {
            const int count = pushChildren(nodes[node], width * node + 1, q, found.reach2, children);
            for (int i = 0; i < count; ++i) prefetchLines(nodes[numberOf(children[i])]);
            size += count;
            continue;
        }
        int count = pushChildren(nodes[node], width * (node - firstLowest), q, found.reach2, children);
        for (int i = count; i-- > 0;) prefetchLines(leaves[numberOf(children[i])]);
        while (count-- > 0)
            if (boundOf(children[count]) <= found.reach2)
                testLeaf(leaves[numberOf(children[count])], numberOf(children[count]), q, found);
    }
}

} // namespace

void NearestCandidates::search(const PackedTriangles& tree, const FrameQuery& query, double known)
{
    const double reach = std::min(known + query.loss, 1e18) * 1.000001;
    Found found{m_found, 0, static_cast<float>(reach * reach), static_cast<float>(query.loss)};
    findCandidates(tree, query.at, found);
    m_count = 0;
    for (size_t i = 0; i < found.count; ++i) {
        m_found[m_count] = m_found[i];
        m_count += m_found[i].lower2 <= found.reach2;
    }
}

} // namespace znGeom::internal
