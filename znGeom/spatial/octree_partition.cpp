#include "znGeom/spatial/octree_partition.h"

#include <bit>
#include <cstdint>
#include <memory>
#include <vector>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/counting_sort.h"
#include "znGeom/spatial/box_predicates.h"
#include "znGeom/spatial/internal/float4.h"
#include "znGeom/spatial/internal/partition_on_pool.h"

namespace znGeom {

using namespace znLinear;

namespace {

using znUtil::Slice;
using znUtil::ThreadPool;

/// A box in two registers; what their fourth numbers are does not matter.
struct WideBox
{
    Float4 low, high;

    static WideBox of(const BoundingBox& box)
    {
        return {Float4{box.minX, box.minY, box.minZ, 0}, Float4{box.maxX, box.maxY, box.maxZ, 0}};
    }
    BoundingBox narrow() const
    {
        BoundingBox box;
        box.minX = low[0], box.minY = low[1], box.minZ = low[2];
        box.maxX = high[0], box.maxY = high[1], box.maxZ = high[2];
        return box;
    }

    /// As the functions of `BoundingBox` of the same names.
    bool isValid() const { return placesLessOrEqual(low, high) == 7; }
    bool intersects(const WideBox& box) const
    {
        return (placesLessOrEqual(low, box.high) & placesLessOrEqual(box.low, high)) == 7;
    }
    bool contains(const WideBox& box) const
    {
        return (placesLessOrEqual(low, box.low) & placesLessOrEqual(box.high, high)) == 7;
    }
    bool contains(Float4 point) const { return (placesLessOrEqual(low, point) & placesLessOrEqual(point, high)) == 7; }
    /// Without touching a face, beyond which there may be another cell.
    bool containsStrictly(const WideBox& box) const
    {
        return (placesLess(low, box.low) & placesLess(box.high, high)) == 7;
    }
    void extend(Float4 point)
    {
        low = lesser(point, low);
        high = greater(point, high);
    }
};

/// What an `OctreeIterator` is, with a wide box.
struct Cell
{
    WideBox box;
    const OctreeNode* node;
};

/// Finds the leaves that a box meets, as `OctreeBBoxIntersectIt` delivers them, for boxes that tend to be small and
/// close to the one before: a search begins at the lowest cell above the last one that holds the whole box.
class LeafSearch
{
public:
    explicit LeafSearch(const Octree& octree)
        : m_path(std::make_unique<Cell[]>(static_cast<size_t>(octree.maxDepth()))),
          m_stack(std::make_unique<Cell[]>(8 * static_cast<size_t>(octree.maxDepth())))
    {
        m_path[0] = {WideBox::of(octree.getRoot().box), octree.getRoot().node};
        Octree::getNodeOrdering(Vector::x, m_order);
        for (unsigned axes = 0; axes < 8; ++axes) {
            m_withLow[axes] = m_withHigh[axes] = 0;
            for (int k = 0; k < 8; ++k) {
                const unsigned child = static_cast<unsigned>(m_order[k]);
                if ((child | axes) == 7) m_withLow[axes] |= 1u << k;
                if ((child & ~axes) == 0) m_withHigh[axes] |= 1u << k;
            }
        }
    }

    /// Calls `visit(leaf)` for each.
    template <typename Visit>
    void forEachLeaf(const WideBox& box, const Visit& visit)
    {
        if (!box.isValid()) return;
        while (m_level > 0 && !m_path[m_level].box.containsStrictly(box)) --m_level;
        if (m_level == 0 && !m_path[0].box.intersects(box)) return;
        Cell* const stack = m_stack.get();
        stack[0] = descendWhileOneChildMeets(box);
        for (int size = 1; size > 0;) {
            const Cell cell = stack[--size];
            if (cell.node->isLeaf) {
                visit(cell);
                continue;
            }
            const Float4 middle = middleOf(cell);
            for (unsigned meeting = meetingChildren(middle, box); meeting != 0;) {
                const int last = std::bit_width(meeting) - 1;
                stack[size++] = childOf(cell, middle, m_order[last]);
                meeting ^= 1u << last;
            }
        }
    }

private:
    static Float4 middleOf(const Cell& cell) { return (cell.box.low + cell.box.high) * Float4{0.5f, 0.5f, 0.5f, 0.5f}; }
    static Cell childOf(const Cell& cell, Float4 middle, int child)
    {
        return {{pick(child, middle, cell.box.low), pick(child, cell.box.high, middle)},
                cell.node + cell.node->firstChild + child};
    }

    /// Which children of a cell that meets the box meet it as well: bit k for child `m_order[k]`. A low half does when
    /// the box begins before the middle, a high half when it ends behind it.
    unsigned meetingChildren(Float4 middle, const WideBox& box) const
    {
        return m_withLow[placesLessOrEqual(box.low, middle)] & m_withHigh[placesLessOrEqual(middle, box.high)];
    }

    /// The path ends at the last cell above the result.
    Cell descendWhileOneChildMeets(const WideBox& box)
    {
        Cell cell = m_path[m_level];
        while (!cell.node->isLeaf) {
            m_path[m_level] = cell;
            const Float4 middle = middleOf(cell);
            const unsigned meeting = meetingChildren(middle, box);
            if (meeting == 0 || (meeting & (meeting - 1)) != 0) break;
            cell = childOf(cell, middle, m_order[std::countr_zero(meeting)]);
            if (!cell.node->isLeaf) ++m_level;
        }
        return cell;
    }

    std::unique_ptr<Cell[]> m_path; ///< from the root on; below the root only cells that are split
    size_t m_level = 0;             ///< the last one of the path
    std::unique_ptr<Cell[]> m_stack;
    int m_order[8];
    /// By the axes (as bits) on which a box meets the low halves: the children that this allows, in places of
    /// `m_order`; and likewise for the high halves.
    unsigned m_withLow[8], m_withHigh[8];
};

/// The triangles of a mesh, as the partition sees them.
class TriangleElements
{
public:
    using Table = OctreeTris;
    static constexpr const char* message = "OctreeTris:  Partitioned %d triangles into %d voxels in %.3f seconds.\n"
                                           "             (%.2f coherence, %.2f voxels/tri, %.0f tri/sec)\n";

    explicit TriangleElements(const CompactMesh& mesh)
        : count(mesh.getNumTriangles()), m_positions(mesh.getVerticesRaw(), mesh.getNumVertices()),
          m_triangles(mesh.getTriangles())
    {}

    /// The box that `meshTriBoundingBox` makes.
    WideBox box(int triangle) const
    {
        WideBox result = WideBox::of(BoundingBox());
        for (const int corner : m_triangles[triangle].corners) result.extend(m_positions[corner]);
        return result;
    }

    /// `intersects(leaf box, p0, p1, p2)`, which needs no work where a corner lies in the leaf.
    bool touchesLeaf(int triangle, const WideBox& leaf) const
    {
        const MeshTriangle& corners = m_triangles[triangle];
        if (leaf.contains(m_positions[corners[0]]) || leaf.contains(m_positions[corners[1]]) ||
            leaf.contains(m_positions[corners[2]]))
            return true;
        return intersects(leaf.narrow(), m_positions.at(corners[0]), m_positions.at(corners[1]),
                          m_positions.at(corners[2]));
    }

    int count;

private:
    Float4Positions m_positions;
    const MeshTriangle* m_triangles;
};

/// The lines of a mesh.
class LineElements
{
public:
    using Table = OctreeLines;
    static constexpr const char* message = "OctreeLines:  Partitioned %d lines into %d voxels in %.3f seconds.\n"
                                           "             (%.2f coherence, %.2f duplication, %.0f tri/sec)\n";

    explicit LineElements(const CompactMesh& mesh)
        : count(mesh.getNumLines()), m_positions(mesh.getVerticesRaw(), mesh.getNumVertices()), m_lines(mesh.getLines())
    {}

    WideBox box(int line) const
    {
        const Float4 start = m_positions[m_lines[line][0]];
        WideBox result{start, start};
        result.extend(m_positions[m_lines[line][1]]);
        return result;
    }
    bool touchesLeaf(int line, const WideBox& leaf) const
    {
        return intersects(leaf.narrow(), m_positions.at(m_lines[line][0]), m_positions.at(m_lines[line][1]));
    }

    int count;

private:
    Float4Positions m_positions;
    const MeshLine* m_lines;
};

/// Walks the elements in order and keeps the leaf at which the last search ended.
template <typename Elements>
class Partitioner
{
public:
    Partitioner(const Octree& octree, const Elements& elements) : m_search(octree), m_elements(elements) {}

    /// \param record  called with (leaf, element) for each entry
    /// \return whether the element was placed without a search
    template <typename Record>
    bool place(int element, const Record& record)
    {
        const WideBox box = m_elements.box(element);
        if (m_lastLeaf.node && m_lastLeaf.box.contains(box)) {
            record(m_lastLeaf.node->leafIndex, element);
            return true;
        }
        m_search.forEachLeaf(box, [&](const Cell& leaf) {
            m_lastLeaf = leaf;
            if (m_elements.touchesLeaf(element, leaf.box)) record(leaf.node->leafIndex, element);
        });
        return false;
    }

    /// Makes the last leaf what it is after all elements before `element`, so that a slice begins as if one thread had
    /// done everything. Steps back to an element that ends at the same leaf whatever was before it, a few steps in
    /// general, and goes forward from there.
    void continueAt(int element)
    {
        int from = element;
        while (from > 0 && !endsAtKnownLeaf(from - 1)) --from;
        for (; from < element; ++from) place(from, [](int, int) {});
    }

private:
    /// Whether the element forces the last leaf: it meets a single one, or lies wholly within none.
    bool endsAtKnownLeaf(int element)
    {
        const WideBox box = m_elements.box(element);
        int numMet = 0;
        bool withinOne = false;
        Cell last = m_lastLeaf;
        m_search.forEachLeaf(box, [&](const Cell& leaf) {
            ++numMet;
            withinOne = withinOne || leaf.box.contains(box);
            last = leaf;
        });
        if (numMet == 0 || (numMet > 1 && withinOne)) return false;
        m_lastLeaf = last;
        return true;
    }

    LeafSearch m_search;
    const Elements& m_elements;
    Cell m_lastLeaf{WideBox::of(BoundingBox()), nullptr};
};

struct LeafEntry
{
    int leafIndex, element;
};

/// Finds the entries of each thread's slice.
template <typename Elements>
class PartitionAlg : public znUtil::ThreadedAlg
{
public:
    struct Worker
    {
        std::vector<LeafEntry> pairs;
        int coherentCount = 0; ///< elements that were placed without a search
    };

    PartitionAlg(const Octree& octree, const Elements& elements)
        : m_octree(octree), m_elements(elements), m_reserveTotal(2 * static_cast<size_t>(elements.count))
    {}

    void initialize(int numThreads) override { workers = std::vector<Worker>(static_cast<size_t>(numThreads)); }

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_elements.count, threadIndex, numThreads);
        Worker& worker = workers[static_cast<size_t>(threadIndex)];
        std::vector<LeafEntry> pairs;
        pairs.reserve(m_reserveTotal / static_cast<size_t>(numThreads));
        int coherentCount = 0;
        Partitioner<Elements> partitioner(m_octree, m_elements);
        if (slice.size() > 0) partitioner.continueAt(slice.begin);
        for (int element = slice.begin; element < slice.end; ++element)
            coherentCount += partitioner.place(element, [&pairs](int leaf, int placed) {
                pairs.push_back({leaf, placed});
            });
        worker.pairs.swap(pairs);
        worker.coherentCount = coherentCount;
    }

    std::vector<Worker> workers;

private:
    const Octree& m_octree;
    const Elements& m_elements;
    size_t m_reserveTotal;
};

using TriPartitionAlg = PartitionAlg<TriangleElements>;
using LinePartitionAlg = PartitionAlg<LineElements>;

/// What `assignFromPairs` would make of all workers' pairs one after the other.
/// \param workers  one per thread of the pool
template <typename Worker>
ArrayOfSets makeTable(int numLeaves, const std::vector<Worker>& workers, ThreadPool& pool)
{
    std::int64_t numPairs = 0;
    for (const Worker& worker : workers) numPairs += static_cast<std::int64_t>(worker.pairs.size());
    ArrayOfSets table(numLeaves, zn::checkedSize(numPairs));
    const auto visit = [&workers](int thread, const auto& take) {
        for (const LeafEntry& entry : workers[static_cast<size_t>(thread)].pairs) take(entry.leafIndex, entry.element);
    };
    znUtil::CountingSort sort(pool, numLeaves);
    sort.count(visit, table.start.write());
    int* const elements = table.elements.write();
    sort.place(visit, [elements](int place, int element) { elements[place] = element; });
    return table;
}

template <typename Elements, typename Alg>
void partition(const CompactMesh& mesh, const Octree& octree, typename Elements::Table& result, ThreadPool& pool)
{
    znOS::StopWatch watch;
    if (octree.numLeaves() < 1) return;
    const Elements elements(mesh);
    Alg alg(octree, elements);
    pool.run(alg);
    int coherentCount = 0;
    for (const auto& worker : alg.workers) coherentCount += worker.coherentCount;

    ArrayOfSets sets = makeTable(octree.numLeaves(), alg.workers, pool);
    const int numPairs = sets.elements.size();
    typename Elements::Table table(sets);
    result.swap(table);

    const float count = static_cast<float>(elements.count);
    const double seconds = watch.stop();
    debugChannel().print(Elements::message, elements.count, octree.numLeaves(), seconds,
                         static_cast<double>(static_cast<float>(coherentCount) / count),
                         static_cast<double>(static_cast<float>(numPairs) / count), elements.count / seconds);
}

} // namespace

void computeOctreeTris(const CompactMesh& mesh, const Octree& octree, OctreeTris& result, ThreadPool& pool)
{
    partition<TriangleElements, TriPartitionAlg>(mesh, octree, result, pool);
}

void computeOctreeTris(const CompactMesh& mesh, const Octree& octree, OctreeTris& result)
{
    computeOctreeTris(mesh, octree, result, ThreadPool::get());
}

void meshOctreeLines(const CompactMesh& mesh, const Octree& octree, OctreeLines& result, ThreadPool& pool)
{
    partition<LineElements, LinePartitionAlg>(mesh, octree, result, pool);
}

void meshOctreeLines(const CompactMesh& mesh, const Octree& octree, OctreeLines& result)
{
    meshOctreeLines(mesh, octree, result, ThreadPool::get());
}

} // namespace znGeom
