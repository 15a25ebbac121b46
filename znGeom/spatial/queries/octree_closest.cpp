#include "znGeom/spatial/queries/octree_closest.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "znGeom/foundation/machine/prefetch.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// A waiting cell: its record as an offset from the root's, and where its box can be found.
struct HeapEntry
{
    double distance2;
    std::int32_t node; ///< 0 for the root
    std::uint32_t box; ///< 8 times the index of its parent's box in the list of boxes, plus its child number
};

/// A binary heap, the least key on top. Comparisons are strict and the order among equal keys follows from that, even
/// with keys that are not numbers.
class CellHeap
{
public:
    bool empty() const { return m_size == 0; }
    const HeapEntry& top() const { return m_entries[0]; }
    void clear() { m_size = 0; }

    /// Makes room for that many calls of `push`.
    void makeRoom(size_t more)
    {
        if (m_size + more > m_entries.size()) m_entries.resize(2 * m_entries.size() + more);
    }

    void push(const HeapEntry& entry)
    {
        HeapEntry* const entries = m_entries.data();
        size_t at = m_size++;
        while (at > 0) {
            const size_t parent = (at - 1) / 2;
            if (!(entries[parent].distance2 > entry.distance2)) break;
            entries[at] = entries[parent];
            at = parent;
        }
        entries[at] = entry;
    }

    void pop()
    {
        HeapEntry* const entries = m_entries.data();
        const HeapEntry sinking = entries[--m_size];
        // The entry after the last one stands in for a missing second child.
        entries[m_size].distance2 = std::numeric_limits<double>::infinity();
        size_t at = 0;
        for (size_t child = 1; child < m_size; child = 2 * at + 1) {
            child += entries[child].distance2 > entries[child + 1].distance2;
            if (!(sinking.distance2 > entries[child].distance2)) break;
            entries[at] = entries[child];
            at = child;
        }
        entries[at] = sinking;
    }

private:
    std::vector<HeapEntry> m_entries;
    size_t m_size = 0;
};

/// The squares of how far a point lies outside the low and the high half of a range: the terms of
/// `BoundingBox::distance2`.
struct HalvesDistance2
{
    double of[2];

    HalvesDistance2(float low, float high, double value)
    {
        const double middle = static_cast<double>(OctreeIterator::middle(low, high));
        of[0] = square(std::max(std::max(static_cast<double>(low) - value, value - middle), 0.0));
        of[1] = square(std::max(std::max(middle - value, value - static_cast<double>(high)), 0.0));
    }
    static double square(double d) { return d * d; }
};

} // namespace

class OctreeClosestItImpl final : public zn::ImplBase
{
public:
    bool valid() const { return !m_heap.empty(); }
    double distance2() const { return m_heap.top().distance2; }

    void reset(const Octree& octree, const Point& query)
    {
        m_root = octree.getRoot();
        m_query = PointFlt(query);
        m_heap.clear();
        m_splitBoxes.clear();
        m_heap.makeRoom(1);
        m_heap.push({m_root.box.distance2(m_query), 0, 0});
        descend(noBound);
    }

    void next() { step(noBound); }
    bool nextWithin(double bound2)
    {
        step(bound2);
        return valid() && !(distance2() >= bound2);
    }

    OctreeIterator get() const
    {
        const HeapEntry& leaf = m_heap.top();
        return {boxOf(leaf), m_root.node + leaf.node};
    }

private:
    /// No distance is as large as this, nor is one that is not a number.
    static constexpr double noBound = std::numeric_limits<double>::quiet_NaN();

    /// Removes the leaf on top.
    void step(double bound2)
    {
        m_heap.pop();
        descend(bound2);
    }

    /// Until a leaf is on top, the heap is empty, or what is on top is too far away.
    void descend(double bound2)
    {
        while (!m_heap.empty() && !(m_heap.top().distance2 >= bound2)) {
            const HeapEntry cell = m_heap.top();
            const OctreeNode& node = m_root.node[cell.node];
            if (node.isLeaf) return;
            znUtil::prefetch(&node + node.firstChild);
            znUtil::prefetch(&node + node.firstChild + 4);
            m_heap.pop();
            pushChildren(boxOf(cell), cell.node + node.firstChild);
        }
    }

    void pushChildren(const BoundingBox& box, std::int32_t firstChild)
    {
        const HalvesDistance2 x(box.minX, box.maxX, static_cast<double>(m_query.x));
        const HalvesDistance2 y(box.minY, box.maxY, static_cast<double>(m_query.y));
        const HalvesDistance2 z(box.minZ, box.maxZ, static_cast<double>(m_query.z));
        const std::uint32_t firstBox = static_cast<std::uint32_t>(m_splitBoxes.size()) * 8;
        m_splitBoxes.push_back(box);
        m_heap.makeRoom(8);
        for (int child = 0; child < 8; ++child)
            m_heap.push({x.of[child & 1] + y.of[child >> 1 & 1] + z.of[child >> 2], firstChild + child,
                         firstBox + static_cast<std::uint32_t>(child)});
    }

    BoundingBox boxOf(const HeapEntry& cell) const
    {
        if (cell.node == 0) return m_root.box;
        BoundingBox box = m_splitBoxes[cell.box / 8];
        OctreeIterator::halve(box, static_cast<int>(cell.box % 8));
        return box;
    }

    OctreeIterator m_root;
    PointFlt m_query;
    CellHeap m_heap;
    std::vector<BoundingBox> m_splitBoxes; ///< of the cells that were split in this walk
};

OctreeClosestIt::OctreeClosestIt() = default;
OctreeClosestIt::OctreeClosestIt(const Octree& octree, const Point& point) { reset(octree, point); }
OctreeClosestIt::OctreeClosestIt(const OctreeClosestIt& other) = default;
OctreeClosestIt::OctreeClosestIt(OctreeClosestIt&& other) noexcept = default;
OctreeClosestIt::~OctreeClosestIt() = default;

void OctreeClosestIt::reset(const Octree& octree, const Point& point)
{
    if (!m_impl) m_impl = zn::ImplPointer<OctreeClosestItImpl>(new OctreeClosestItImpl);
    m_impl->reset(octree, point);
}

bool OctreeClosestIt::valid() const { return m_impl->valid(); }
void OctreeClosestIt::next() { m_impl->next(); }
bool OctreeClosestIt::nextWithin(double bound2) { return m_impl->nextWithin(bound2); }
OctreeIterator OctreeClosestIt::get() const { return m_impl->get(); }
double OctreeClosestIt::getDistance2() const { return m_impl->distance2(); }

} // namespace znGeom
