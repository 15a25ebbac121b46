#include "znGeom/spatial/trees/internal/packed_triangles.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/spatial/trees/internal/halving_order.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

constexpr int width = PackedTriangles::width;

/// How many leaves ahead the triangles are prefetched.
constexpr int leavesAhead = 2;

/// Where the corners of an absent triangle lie: beyond all reach, with squares that do not overflow.
constexpr float beyondReach = 1e18f;

/// What each thread has found in its slice of the triangles.
struct FoundRecords
{
    int count = 0;
    BoundingBox box;
};

/// The middle of the box of each triangle whose corners are finite, from the beginning of each slice on.
class TriangleRecords
{
public:
    TriangleRecords(const CompactMesh& mesh, ThreadPool& pool)
        : m_mesh(mesh), m_records(makeAlignedArray<PointRecord>(static_cast<size_t>(mesh.getNumTriangles())))
    {
        const int numTriangles = mesh.getNumTriangles();
        zn::vector<FoundRecords> found(pool.getNumThreads());
        znUtil::parallelFor(pool, numTriangles,
                            [&](Slice slice, int threadIndex) { found[threadIndex] = list(slice); });
        for (int thread = 0; thread < found.size(); ++thread) {
            const PointRecord* from = m_records.get() + Slice(numTriangles, thread, found.size()).begin;
            if (from != m_records.get() + count) std::copy_n(from, found[thread].count, m_records.get() + count);
            count += found[thread].count;
            box.extend(found[thread].box);
        }
    }
    PointRecord* get() { return m_records.get(); }

    int count = 0;
    BoundingBox box;

private:
    FoundRecords list(Slice slice)
    {
        constexpr int ahead = 16;
        const MeshVertex* vertices = m_mesh.getVertices();
        const MeshTriangle* triangles = m_mesh.getTriangles();
        FoundRecords found;
        PointRecord* record = m_records.get() + slice.begin;
        for (int t = slice.begin; t < slice.end; ++t) {
            if (t + ahead < slice.end)
                for (const int corner : triangles[t + ahead].corners) znUtil::prefetch(&vertices[corner]);
            const float *a = &vertices[triangles[t][0]].x, *b = &vertices[triangles[t][1]].x,
                        *c = &vertices[triangles[t][2]].x;
            float nothing = 0; // not a number if a coordinate is not finite
            BoundingBox triangle;
            float *low = &triangle.minX, *high = &triangle.maxX;
            for (int axis = 0; axis < 3; ++axis) {
                nothing += (a[axis] * 0 + b[axis] * 0) + c[axis] * 0;
                low[axis] = lesser(lesser(a[axis], b[axis]), c[axis]);
                high[axis] = greater(greater(a[axis], b[axis]), c[axis]);
                record->at[axis] = low[axis] * 0.5f + high[axis] * 0.5f;
            }
            if (nothing != 0) continue;
            record->number = t;
            ++record;
            found.box.extend(triangle);
        }
        found.count = static_cast<int>(record - (m_records.get() + slice.begin));
        return found;
    }

    const CompactMesh& m_mesh;
    AlignedArray<PointRecord> m_records;
};

/// Puts the box of eight triangles, or of eight boxes, in place `child` of a node.
void setChild(PackedTriangles::Node& node, int child, const PackedTriangles::Leaf& leaf, int count)
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

void setChild(PackedTriangles::Node& node, int child, const PackedTriangles::Node& below)
{
    for (int axis = 0; axis < 3; ++axis) {
        node.low[axis][child] = *std::min_element(below.low[axis], below.low[axis] + width);
        node.high[axis][child] = *std::max_element(below.high[axis], below.high[axis] + width);
    }
}

void setNoChild(PackedTriangles::Node& node, int child)
{
    for (int axis = 0; axis < 3; ++axis) {
        node.low[axis][child] = std::numeric_limits<float>::infinity();
        node.high[axis][child] = -std::numeric_limits<float>::infinity();
    }
}

} // namespace

PackedTriangles::PackedTriangles(const CompactMesh& mesh, ThreadPool& pool)
{
    TriangleRecords records(mesh, pool);
    numTriangles = records.count;
    if (numTriangles == 0) return;
    box = records.box;
    frame = SearchFrame(box);
    auto order = makeAlignedArray<int>(static_cast<size_t>(numTriangles));
    {
        const auto scratch = makeAlignedArray<PointRecord>(static_cast<size_t>(numTriangles));
        orderByHalving(records.get(), scratch.get(), numTriangles, order.get(), pool);
    }
    countLevels();
    nodes = makeAlignedArray<Node>(static_cast<size_t>(numNodes));
    leaves = makeAlignedArray<Leaf>(static_cast<size_t>(numLeaves));
    fillLeaves(mesh, order.get(), pool);
    fillUpperNodes();
}

void PackedTriangles::countLevels()
{
    numLeaves = (numTriangles - 1) / width + 1;
    const int numLowest = (numLeaves - 1) / width + 1;
    for (int onLevel = 1; onLevel < numLowest; onLevel *= width) firstLowest = width * firstLowest + 1;
    numNodes = firstLowest + numLowest;
}

void PackedTriangles::fillLeaves(const CompactMesh& mesh, const int* order, ThreadPool& pool)
{
    zn::vector<char> lost(pool.getNumThreads(), 0);
    znUtil::parallelFor(pool, numNodes - firstLowest, [&](Slice slice, int threadIndex) {
        bool exact = true;
        for (int lowest = slice.begin; lowest < slice.end; ++lowest) {
            Node& node = nodes[static_cast<size_t>(firstLowest + lowest)];
            for (int child = 0; child < width; ++child) {
                const int number = width * lowest + child;
                if (number >= numLeaves) {
                    setNoChild(node, child);
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

/// From the bottom up.
void PackedTriangles::fillUpperNodes()
{
    int first = firstLowest, count = numNodes - firstLowest;
    while (first > 0) {
        const int firstAbove = (first - 1) / width, countAbove = (count - 1) / width + 1;
        for (int i = 0; i < width * countAbove; ++i) {
            Node& above = nodes[static_cast<size_t>(firstAbove + i / width)];
            if (i < count)
                setChild(above, i % width, nodes[static_cast<size_t>(first + i)]);
            else
                setNoChild(above, i % width);
        }
        first = firstAbove;
        count = countAbove;
    }
}

} // namespace znGeom::internal
