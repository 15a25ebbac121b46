#include "znGeom/spatial/trees/internal/packed_triangles.h"

#include <algorithm>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"
#include "znGeom/spatial/trees/internal/triangle_order.h"

namespace znGeom::internal {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// How many leaves ahead the triangles are prefetched.
constexpr int leavesAhead = 2;

/// Where the corners of an absent triangle lie: beyond all reach, with squares that do not overflow.
constexpr float beyondReach = 1e18f;

/// Puts the box of up to eight triangles in place `child` of a node.
void setChild(BoxGroup& node, int child, const PackedTriangles::Leaf& leaf, int count)
{
    for (int axis = 0; axis < 3; ++axis) {
        float low = leaf.corners[axis][0], high = low;
        for (int corner = axis; corner < 9; corner += 3)
            for (int slot = 0; slot < count; ++slot) {
                low = lesser(leaf.corners[corner][slot], low);
                high = greater(leaf.corners[corner][slot], high);
            }
        node.low[axis][child] = low;
        node.high[axis][child] = high;
    }
}

} // namespace

PackedTriangles::PackedTriangles(const CompactMesh& mesh, ThreadPool& pool)
{
    const TriangleOrder order = orderTriangles(mesh, pool);
    numTriangles = order.count;
    if (numTriangles == 0) return;
    box = order.box;
    frame = SearchFrame(box);
    makeNodes(numTriangles);
    leaves = makeAlignedArray<Leaf>(static_cast<size_t>(numLeaves));
    fillLeaves(mesh, order.numbers.get(), pool);
    fillUpperNodes();
}

void PackedTriangles::fillLeaves(const CompactMesh& mesh, const int* order, ThreadPool& pool)
{
    zn::vector<char> lost(pool.getNumThreads(), 0);
    znUtil::parallelFor(pool, numNodes - firstLowest, [&](Slice slice, int threadIndex) {
        bool exact = true;
        for (int lowest = slice.begin; lowest < slice.end; ++lowest) {
            BoxGroup& node = nodes[static_cast<size_t>(firstLowest + lowest)];
            for (int child = 0; child < width; ++child) {
                const int number = width * lowest + child;
                if (number >= numLeaves) {
                    node.setNone(child);
                    continue;
                }
                const int count = std::min(width, numTriangles - width * number);
                for (int i = width * (number + leavesAhead); i < width * (number + leavesAhead + 1); ++i)
                    if (i < numTriangles) znUtil::prefetch(&mesh.getTriangles()[order[i]]);
                Leaf& leaf = leaves[static_cast<size_t>(number)];
                exact = fillLeaf(mesh, order + static_cast<std::ptrdiff_t>(width) * number, count, leaf) && exact;
                setChild(node, child, leaf, count);
            }
        }
        lost[threadIndex] = !exact;
    });
    isExact = std::find(lost.begin(), lost.end(), 1) == lost.end();
}

/// \return whether all coordinates can be recovered exactly
bool PackedTriangles::fillLeaf(const CompactMesh& mesh, const int* order, int count, Leaf& leaf) const
{
    const MeshVertex* vertices = mesh.getVertices();
    const MeshTriangle* triangles = mesh.getTriangles();
    for (int slot = 0; slot < count; ++slot)
        for (const int corner : triangles[order[slot]].corners) znUtil::prefetch(&vertices[corner]);
    bool exact = true;
    for (int slot = 0; slot < count; ++slot) {
        const int t = order[slot];
        leaf.triangles[slot] = t;
        for (int corner = 0; corner < 3; ++corner) {
            const float* at = &vertices[triangles[t][corner]].x;
            for (int axis = 0; axis < 3; ++axis) {
                const float coordinate = frame.toFrame(at[axis], axis);
                leaf.corners[3 * corner + axis][slot] = coordinate;
                exact = exact & (frame.fromFrame(coordinate, axis) == static_cast<double>(at[axis]));
            }
        }
    }
    for (int slot = count; slot < width; ++slot) {
        leaf.triangles[slot] = -1;
        for (auto& coordinates : leaf.corners) coordinates[slot] = beyondReach;
    }
    return exact;
}

} // namespace znGeom::internal
