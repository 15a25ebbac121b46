#include "znGeom/spatial/trees/internal/tree_builder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "znGeom/foundation/machine/internal/aligned_array.h"
#include "znGeom/foundation/threads/counting_sort.h"

namespace znGeom::internal {

namespace {

using znUtil::Slice;
using znUtil::ThreadPool;

constexpr int deepestLevel = 24;
/// How many levels are found by one counting sort, and from how many points on that pays off.
constexpr int sortedLevels = 3;
constexpr int minPointsToSort = 16384;

struct TreePoint
{
    float x, y, z;
    int index;
};

template <int Axes>
struct TreeRules
{
    static constexpr int numChildren = 1 << Axes;
    /// The number of cells that the counting sort distinguishes.
    static constexpr int numSortedCells = 1 << (Axes * sortedLevels);

    int leafCapacity;

    static bool coincide(const TreePoint* first, const TreePoint* last)
    {
        return std::all_of(first, last,
                           [&](const TreePoint& p) { return p.x == first->x && p.y == first->y && p.z == first->z; });
    }

    static bool canBeHalved(const BoundingBox& box)
    {
        const auto halves = [](float low, float high) {
            const float middle = PointTreeIterator<Axes>::middle(low, high);
            return low < middle && middle < high;
        };
        return halves(box.minX, box.maxX) || halves(box.minY, box.maxY) || (Axes == 3 && halves(box.minZ, box.maxZ));
    }

    bool isToBeSplit(const TreePoint* first, const TreePoint* last, const BoundingBox& box, int level) const
    {
        return last - first > leafCapacity && level < deepestLevel && canBeHalved(box) && !coincide(first, last);
    }

    static BoundingBox childBox(BoundingBox box, int child)
    {
        PointTreeIterator<Axes>::halve(box, child);
        return box;
    }
};

PointTreeNode makeNode(int firstPoint, int endPoint) { return {1, firstPoint, endPoint, -1, 0}; }

/// A cell whose points are in place and which is split on its own.
struct SubtreeTask
{
    BoundingBox box;
    int level;
    int node;                       ///< its record among the top nodes
    PointTreeNode root;             ///< `firstChild` is a position among the nodes that its builder made
    int beginNode = 0, endNode = 0; ///< its nodes there
    int numLeaves = 0;
};

/// Splits cells all the way down, depth first. One per thread; the nodes of several tasks lie one after the other.
template <int Axes>
class SubtreeBuilder
{
public:
    zn::vector<PointTreeNode> nodes;
    int maxDepth = 0;

    /// \param points   already in place for the tasks
    /// \param scratch  room for as many
    SubtreeBuilder(TreeRules<Axes> rules, TreePoint* points, TreePoint* scratch, int* pointIndices)
        : m_rules(rules), m_points(points), m_scratch(scratch), m_pointIndices(pointIndices)
    {}

    void build(SubtreeTask& task)
    {
        task.beginNode = nodes.size();
        task.numLeaves = 0;

        m_pending.clear();
        m_pending.append({task.box, -1, task.level, false});
        while (!m_pending.empty()) {
            const PendingCell cell = m_pending.back();
            m_pending.eraseBack();
            buildCell(cell, task);
        }
        task.endNode = nodes.size();
    }

private:
    struct PendingCell
    {
        BoundingBox box;
        int node; ///< -1 for the root of the task
        int level;
        bool inScratch; ///< where its points currently are
    };

    void buildCell(const PendingCell& cell, SubtreeTask& task)
    {
        PointTreeNode& node = cell.node < 0 ? task.root : nodes[cell.node];
        const TreePoint* points = (cell.inScratch ? m_scratch : m_points) + node.firstPoint;
        const TreePoint* end = points + (node.endPoint - node.firstPoint);
        maxDepth = std::max(maxDepth, cell.level);
        if (m_rules.isToBeSplit(points, end, cell.box, cell.level)) {
            split(cell, node, points, end);
        } else {
            node.leafIndex = task.numLeaves++;
            std::transform(points, end, m_pointIndices + node.firstPoint, [](const TreePoint& p) { return p.index; });
        }
    }

    /// Sorts the points of a cell by child into the other array, and appends the children. `node` dangles after the
    /// first append.
    void split(const PendingCell& cell, PointTreeNode& node, const TreePoint* points, const TreePoint* end)
    {
        constexpr int numChildren = TreeRules<Axes>::numChildren;
        const BoundingBox& box = cell.box;
        const float x = PointTreeIterator<Axes>::middle(box.minX, box.maxX);
        const float y = PointTreeIterator<Axes>::middle(box.minY, box.maxY);
        const float z = PointTreeIterator<Axes>::middle(box.minZ, box.maxZ);
        const auto childOf = [&](const TreePoint& p) {
            const int child = (p.x > x) | (p.y > y) << 1;
            return Axes == 3 ? child | (p.z > z) << 2 : child;
        };

        std::array<int, numChildren + 1> starts{};
        for (const TreePoint* p = points; p != end; ++p) ++starts[static_cast<size_t>(childOf(*p)) + 1];
        for (size_t i = 1; i <= numChildren; ++i) starts[i] += starts[i - 1];

        const int firstPoint = node.firstPoint;
        const int firstChild = nodes.size();
        node.isLeaf = 0;
        node.firstChild = cell.node < 0 ? firstChild : firstChild - cell.node;
        for (size_t i = 0; i < numChildren; ++i)
            nodes.append(makeNode(firstPoint + starts[i], firstPoint + starts[i + 1]));

        TreePoint* sorted = (cell.inScratch ? m_points : m_scratch) + firstPoint;
        for (const TreePoint* p = points; p != end; ++p) sorted[starts[static_cast<size_t>(childOf(*p))]++] = *p;
        for (int child = numChildren - 1; child >= 0; --child)
            m_pending.append(
                {TreeRules<Axes>::childBox(box, child), firstChild + child, cell.level + 1, !cell.inScratch});
    }

    TreeRules<Axes> m_rules;
    TreePoint* m_points;
    TreePoint* m_scratch;
    int* m_pointIndices;
    zn::vector<PendingCell> m_pending;
};

/// Runs the tasks in chunks; each chunk keeps its own nodes, so that they can be joined in order.
template <int Axes>
class SubtreeLoop : public znUtil::ThreadedChunkAlg
{
public:
    zn::vector<SubtreeTask>& tasks;
    std::vector<SubtreeBuilder<Axes>> builders; ///< one per chunk

    SubtreeLoop(zn::vector<SubtreeTask>& subtreeTasks, const SubtreeBuilder<Axes>& prototype)
        : tasks(subtreeTasks), m_prototype(prototype)
    {}

    void initialize(int) override { builders.assign(static_cast<size_t>(numChunks), m_prototype); }

    void execute(int chunkIndex, int) override
    {
        const Slice slice(tasks.size(), chunkIndex, numChunks);
        for (int i = slice.begin; i < slice.end; ++i) builders[static_cast<size_t>(chunkIndex)].build(tasks[i]);
    }

private:
    SubtreeBuilder<Axes> m_prototype;
};

/// The cells of the first levels: a point's place on each axis is found by a few comparisons with the middles there.
template <int Axes>
class SortedCells
{
public:
    explicit SortedCells(const BoundingBox& box)
    {
        const float *low = &box.minX, *high = &box.maxX;
        for (int axis = 0; axis < Axes; ++axis) fillMiddles(m_middles[axis], low[axis], high[axis]);
        for (int place = 0; place < cellsPerAxis; ++place)
            for (int bit = 0; bit < sortedLevels; ++bit) m_spread[place] |= (place >> bit & 1) << (bit * Axes);
    }

    /// The number of a point's cell, the child number of the first level in its highest bits.
    int cellOf(const float* point) const
    {
        int cell = 0;
        for (int axis = 0; axis < Axes; ++axis) {
            int place = 1;
            for (int level = 0; level < sortedLevels; ++level)
                place = 2 * place + (point[axis] > m_middles[axis][place]);
            cell |= m_spread[place - cellsPerAxis] << axis;
        }
        return cell;
    }

private:
    static constexpr int cellsPerAxis = 1 << sortedLevels;

    /// The middles as a heap: entry 1 halves the whole, entries 2i and 2i + 1 the halves of entry i.
    static void fillMiddles(float* middles, float low, float high)
    {
        float lows[cellsPerAxis], highs[cellsPerAxis];
        lows[1] = low, highs[1] = high;
        for (int i = 1; i < cellsPerAxis; ++i) {
            if (i > 1) {
                lows[i] = i & 1 ? middles[i / 2] : lows[i / 2];
                highs[i] = i & 1 ? highs[i / 2] : middles[i / 2];
            }
            middles[i] = PointTreeIterator<Axes>::middle(lows[i], highs[i]);
        }
    }

    float m_middles[Axes][cellsPerAxis];
    int m_spread[cellsPerAxis] = {};
};

template <int Axes>
class TreeBuild
{
public:
    TreeBuild(int numPoints, const float* points, const BoundingBox& box, int leafCapacity, ThreadPool& pool)
        : m_numPoints(numPoints), m_source(points), m_box(box), m_rules{std::max(leafCapacity, 1)}, m_pool(pool),
          m_points(internal::makeAlignedArray<TreePoint>(static_cast<size_t>(numPoints))),
          m_scratch(internal::makeAlignedArray<TreePoint>(static_cast<size_t>(numPoints)))
    {
        m_tree.pointIndices.resize(numPoints);
    }

    PointTree run()
    {
        if (m_numPoints >= minPointsToSort) {
            sortIntoCells();
            m_tree.nodes.append(makeNode(0, m_numPoints));
            makeTopNodes(0, m_box, 0, 0);
        } else {
            for (int i = 0; i < m_numPoints; ++i) m_points[static_cast<size_t>(i)] = pointAt(i);
            m_tree.nodes.append(makeNode(0, m_numPoints));
            addTask(0, m_box, 1);
        }
        buildSubtrees();
        if (m_numPoints == 0) m_tree.numLeaves = 0;
        return std::move(m_tree);
    }

private:
    using Rules = TreeRules<Axes>;

    TreePoint pointAt(int i) const
    {
        const float* p = m_source + 3 * static_cast<std::ptrdiff_t>(i);
        return {p[0], p[1], p[2], i};
    }

    void sortIntoCells()
    {
        const SortedCells<Axes> cells(m_box);
        const int numThreads = m_pool.getNumThreads();
        const auto cellOf = std::make_unique_for_overwrite<std::uint16_t[]>(static_cast<size_t>(m_numPoints));
        const auto visit = [this, numThreads, cellOf = cellOf.get()](int thread, const auto& take) {
            const Slice slice(m_numPoints, thread, numThreads);
            for (int i = slice.begin; i < slice.end; ++i) take(cellOf[i], i);
        };
        znUtil::parallelFor(m_pool, m_numPoints, [&, cellOf = cellOf.get()](Slice slice, int) {
            for (int i = slice.begin; i < slice.end; ++i)
                cellOf[i] = static_cast<std::uint16_t>(cells.cellOf(m_source + 3 * std::ptrdiff_t{i}));
        });
        znUtil::CountingSort sort(m_pool, Rules::numSortedCells);
        sort.count(visit, m_cellStarts.data());
        m_cellStarts.back() = m_numPoints;
        TreePoint* const points = m_points.get();
        sort.place(visit, [this, points](int place, int i) { points[place] = pointAt(i); });
    }

    /// Splits a cell of the sorted levels; what lies below them becomes tasks. No deeper than those levels.
    /// \param cell  the cell's number among those of its level
    void makeTopNodes(int node, const BoundingBox& box, int depth, int cell)
    {
        const int first = m_tree.nodes[node].firstPoint, end = m_tree.nodes[node].endPoint;
        const bool split = m_rules.isToBeSplit(&m_points[0] + first, &m_points[0] + end, box, depth + 1);
        if (!split || depth == sortedLevels) {
            // The points of several cells lie together here, each cell's in its own order.
            std::sort(&m_points[0] + first, &m_points[0] + (split ? first : end),
                      [](const TreePoint& a, const TreePoint& b) { return a.index < b.index; });
            addTask(node, box, depth + 1);
            return;
        }
        const int firstChild = m_tree.nodes.size();
        m_tree.nodes[node].isLeaf = 0;
        m_tree.nodes[node].firstChild = firstChild - node;
        const auto startOf = [&](int child) {
            const int shift = Axes * (sortedLevels - depth - 1);
            return m_cellStarts[static_cast<size_t>((cell * Rules::numChildren + child) << shift)];
        };
        for (int child = 0; child < Rules::numChildren; ++child)
            m_tree.nodes.append(makeNode(startOf(child), startOf(child + 1)));
        for (int child = 0; child < Rules::numChildren; ++child)
            makeTopNodes(firstChild + child, Rules::childBox(box, child), depth + 1, cell * Rules::numChildren + child);
    }

    void addTask(int node, const BoundingBox& box, int level)
    {
        SubtreeTask task;
        task.box = box;
        task.level = level;
        task.node = node;
        task.root = m_tree.nodes[node];
        m_tasks.append(task);
    }

    void buildSubtrees()
    {
        SubtreeLoop<Axes> loop(m_tasks, {m_rules, m_points.get(), m_scratch.get(), m_tree.pointIndices.write()});
        m_pool.run(loop);

        int numNodes = m_tree.nodes.size();
        for (const SubtreeBuilder<Axes>& builder : loop.builders) numNodes += builder.nodes.size();
        m_tree.nodes.reserve(numNodes);
        for (int chunk = 0; chunk < loop.numChunks; ++chunk) {
            const SubtreeBuilder<Axes>& builder = loop.builders[static_cast<size_t>(chunk)];
            const Slice slice(m_tasks.size(), chunk, loop.numChunks);
            for (int i = slice.begin; i < slice.end; ++i) join(m_tasks[i], builder.nodes);
            m_tree.maxDepth = std::max(m_tree.maxDepth, builder.maxDepth);
        }
    }

    /// Appends the nodes of a task and continues the numbering with its leaves.
    void join(const SubtreeTask& task, const zn::vector<PointTreeNode>& nodes)
    {
        PointTreeNode& root = m_tree.nodes[task.node];
        root = task.root;
        if (root.isLeaf)
            root.leafIndex += m_tree.numLeaves;
        else
            root.firstChild += m_tree.nodes.size() - task.beginNode - task.node;
        for (int i = task.beginNode; i < task.endNode; ++i) {
            m_tree.nodes.append(nodes[i]);
            if (nodes[i].isLeaf) m_tree.nodes.back().leafIndex += m_tree.numLeaves;
        }
        m_tree.numLeaves += task.numLeaves;
    }

    int m_numPoints;
    const float* m_source;
    BoundingBox m_box;
    Rules m_rules;
    ThreadPool& m_pool;
    internal::AlignedArray<TreePoint> m_points, m_scratch;
    std::array<int, Rules::numSortedCells + 1> m_cellStarts{};
    zn::vector<SubtreeTask> m_tasks;
    PointTree m_tree;
};

} // namespace

template <int Axes>
PointTree buildPointTree(int numPoints, const float* points, const BoundingBox& box, int leafCapacity, bool parallel)
{
    ThreadPool& pool = parallel ? ThreadPool::get() : ThreadPool::getSingleThreadedPool();
    return TreeBuild<Axes>(std::max(numPoints, 0), points, box, leafCapacity, pool).run();
}

template PointTree buildPointTree<2>(int, const float*, const BoundingBox&, int, bool);
template PointTree buildPointTree<3>(int, const float*, const BoundingBox&, int, bool);

} // namespace znGeom::internal
