#include "znGeom/shells/internal/offset_nearness.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

/// The squared distance below which a vertex is too close: less than the square of the distance by what rounding can
/// do, to the distance itself and to coordinates of the size of these.
double boundFor(const Octree& octree, double distance)
{
    constexpr double relative = 1e-9, unit = std::numeric_limits<double>::epsilon();
    const BoundingBox& box = octree.getRoot().box;
    double largest = 0;
    for (const float number : {box.minX, box.minY, box.minZ, box.maxX, box.maxY, box.maxZ})
        largest = std::max(largest, std::fabs(double(number)));
    const double limit = distance * distance, ofCoordinates = 8 * unit * (largest + std::fabs(distance));
    return limit - std::max(relative * limit, ofCoordinates * std::fabs(distance));
}

/// The points of a box of queries; for a single one both ends are the same.
struct Span
{
    Point low, high;

    explicit Span(const Point& point) : low(point), high(point) {}
    void extend(const Point& point)
    {
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    }
};

/// The squares of how far a span lies from the low and the high half of a cell, on one axis.
struct HalvesApart2
{
    double of[2];

    HalvesApart2(float low, float high, double from, double to)
    {
        const double middle = double(OctreeIterator::middle(low, high));
        of[0] = square(std::max({double(low) - to, from - middle, 0.0}));
        of[1] = square(std::max({middle - to, from - double(high), 0.0}));
    }
    static double square(double value) { return value * value; }
};

/// Queries of neighbours share what they look at: the vertices within reach of any of them are gathered first. Where
/// these are too many each query goes on its own, since most of them end early.
class NearSearch
{
public:
    NearSearch(const Octree& octree, const zn::vector<Point>& points, double bound2)
        : m_octree(octree), m_points(points), m_bound2(bound2)
    {}

    /// \param group  a cell of the octree: the queries are the points of its vertices
    void run(const OctreeNode& group, zn::vector<bool>& isNear)
    {
        const int *begin = m_octree.pointIndices() + group.firstPoint, *end = m_octree.pointIndices() + group.endPoint;
        const bool isGathered = gatherFor(begin, end);
        for (const int* query = begin; query != end; ++query) {
            const Point& point = m_points[*query];
            isNear[*query] = isFinite(point) && (isGathered ? hasNearGathered(point) : hasNear(point));
        }
    }

private:
    static constexpr int mostGathered = 512;

    static bool isFinite(const Point& point)
    {
        return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
    }

    bool gatherFor(const int* begin, const int* end)
    {
        begin = std::find_if(begin, end, [this](int query) { return isFinite(m_points[query]); });
        m_numGathered = 0;
        if (begin == end) return true;
        Span span(m_points[*begin]);
        for (const int* query = begin; query != end; ++query)
            if (isFinite(m_points[*query])) span.extend(m_points[*query]);
        return visitLeaves(span, [this](const OctreeNode& leaf) {
            if (m_numGathered + leaf.endPoint - leaf.firstPoint > mostGathered) return false;
            for (int i = leaf.firstPoint; i < leaf.endPoint; ++i, ++m_numGathered) {
                const float* const position = positionOf(i);
                for (int axis = 0; axis < 3; ++axis) m_gathered[axis][m_numGathered] = double(position[axis]);
            }
            return true;
        });
    }

    bool hasNearGathered(const Point& point) const
    {
        constexpr int atOnce = 32;
        for (int first = 0; first < m_numGathered; first += atOnce) {
            const int last = std::min(first + atOnce, m_numGathered);
            int numNear = 0;
            for (int i = first; i < last; ++i) {
                const double x = point.x - m_gathered[0][i], y = point.y - m_gathered[1][i],
                             z = point.z - m_gathered[2][i];
                numNear += x * x + y * y + z * z < m_bound2;
            }
            if (numNear > 0) return true;
        }
        return false;
    }

    bool hasNear(const Point& point)
    {
        return !visitLeaves(Span(point), [&](const OctreeNode& leaf) {
            for (int i = leaf.firstPoint; i < leaf.endPoint; ++i)
                if ((point - Point(PointFlt(positionOf(i)))).length2() < m_bound2) return false;
            return true;
        });
    }

    /// Calls `visit` for leaves within reach of a span until it returns false. \return whether it never did
    template <typename Visit>
    bool visitLeaves(const Span& span, const Visit& visit)
    {
        m_waiting.assign(1, m_octree.getRoot());
        while (!m_waiting.empty()) {
            const OctreeIterator cell = m_waiting.back();
            m_waiting.pop_back();
            if (!cell.node->isLeaf)
                addChildren(cell, span);
            else if (!visit(*cell.node))
                return false;
        }
        return true;
    }

    void addChildren(const OctreeIterator& cell, const Span& span)
    {
        const BoundingBox& box = cell.box;
        const HalvesApart2 x(box.minX, box.maxX, span.low.x, span.high.x);
        const HalvesApart2 y(box.minY, box.maxY, span.low.y, span.high.y);
        const HalvesApart2 z(box.minZ, box.maxZ, span.low.z, span.high.z);
        const OctreeNode* const children = cell.node + cell.node->firstChild;
        for (int child = 0; child < 8; ++child) {
            if (children[child].firstPoint == children[child].endPoint) continue;
            if (!(x.of[child & 1] + y.of[child >> 1 & 1] + z.of[child >> 2] < m_bound2)) continue;
            m_waiting.push_back({box, children + child});
            OctreeIterator::halve(m_waiting.back().box, child);
        }
    }

    const float* positionOf(int place) const
    {
        return m_octree.points() + 3 * static_cast<std::ptrdiff_t>(m_octree.pointIndices()[place]);
    }

    const Octree& m_octree;
    const zn::vector<Point>& m_points;
    double m_bound2;
    std::vector<OctreeIterator> m_waiting;
    double m_gathered[3][mostGathered];
    int m_numGathered = 0;
};

/// The largest cells of an octree that hold no more points than a few, and leaves that hold more.
std::vector<const OctreeNode*> listGroups(const Octree& octree)
{
    constexpr int most = 32;
    std::vector<const OctreeNode*> groups, waiting{octree.getRoot().node};
    while (!waiting.empty()) {
        const OctreeNode* const cell = waiting.back();
        waiting.pop_back();
        const int size = cell->endPoint - cell->firstPoint;
        if (size == 0) continue;
        if (cell->isLeaf || size <= most)
            groups.push_back(cell);
        else
            for (int child = 8; child-- > 0;) waiting.push_back(cell + cell->firstChild + child);
    }
    return groups;
}

} // namespace

BitVector findTooClose(const Octree& octree, const zn::vector<Point>& points, double distance, znUtil::ThreadPool& pool)
{
    znOS::StopWatch watch;
    const double bound2 = boundFor(octree, distance);
    zn::vector<bool> isNear(points.size());
    if (bound2 > 0) {
        const std::vector<const OctreeNode*> groups = listGroups(octree);
        znUtil::parallelFor(pool, static_cast<int>(groups.size()), [&](znUtil::Slice slice, int) {
            NearSearch search(octree, points, bound2);
            for (int i = slice.begin; i < slice.end; ++i) search.run(*groups[static_cast<size_t>(i)], isNear);
        });
    }
    const double each = watch.stop() / std::max(points.size(), 1);
    for (int i = 0; i < points.size() && debugChannel().hasSink(); ++i)
        debugChannel().print("   meshClosestVertex: %f s\n", each);
    BitVector result(points.size());
    result.setWhere([&isNear](int i) { return isNear[i]; });
    return result;
}

} // namespace znGeom::internal
