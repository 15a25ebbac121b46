#include "znGeom/shells/internal/offset_nearness.h"

#include <array>
#include <cmath>

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

class NearSearch
{
public:
    NearSearch(const Octree& octree, double bound2) : m_octree(octree), m_bound2(bound2) {}

    bool hasNear(const Point& point)
    {
        m_waiting.clear();
        const OctreeIterator root = m_octree.getRoot();
        for (OctreeIterator cell = root;;) {
            if (cell.node->isLeaf ? hasNearIn(*cell.node, point) : false) return true;
            if (!cell.node->isLeaf) addChildren(cell, point);
            if (m_waiting.empty()) return false;
            cell = m_waiting.back();
            m_waiting.pop_back();
        }
    }

private:
    bool hasNearIn(const OctreeNode& leaf, const Point& point) const
    {
        for (int i = leaf.firstPoint; i < leaf.endPoint; ++i) {
            const float* const p = m_octree.points() + 3 * static_cast<std::ptrdiff_t>(m_octree.pointIndices()[i]);
            const Vector apart = point - Point(PointFlt(p));
            if (apart.length2() < m_bound2) return true;
        }
        return false;
    }
    void addChildren(const OctreeIterator& cell, const Point& point)
    {
        for (int child = 0; child < 8; ++child) {
            OctreeIterator below = cell;
            below.descend(child);
            if (below.node->firstPoint < below.node->endPoint && distance2(below.box, point) < m_bound2)
                m_waiting.push_back(below);
        }
    }
    static double distance2(const BoundingBox& box, const Point& p)
    {
        const auto outside = [](float low, float high, double value) {
            const double d = std::max(std::max(double(low) - value, value - double(high)), 0.0);
            return d * d;
        };
        return outside(box.minX, box.maxX, p.x) + outside(box.minY, box.maxY, p.y) + outside(box.minZ, box.maxZ, p.z);
    }

    const Octree& m_octree;
    double m_bound2;
    std::vector<OctreeIterator> m_waiting;
};

} // namespace

BitVector findTooClose(const Octree& octree, const zn::vector<Point>& points, double distance)
{
    znOS::StopWatch watch;
    const double bound2 = boundFor(octree, distance);
    zn::vector<bool> isNear(points.size());
    if (bound2 > 0)
        znUtil::parallelFor(znUtil::ThreadPool::get(), points.size(), [&](znUtil::Slice slice, int) {
            NearSearch search(octree, bound2);
            for (int i = slice.begin; i < slice.end; ++i) isNear[i] = search.hasNear(points[i]);
        });
    const double each = watch.stop() / std::max(points.size(), 1);
    for (int i = 0; i < points.size() && debugChannel().hasSink(); ++i)
        debugChannel().print("   meshClosestVertex: %f s\n", each);
    BitVector result(points.size());
    result.setWhere([&isNear](int i) { return isNear[i]; });
    return result;
}

} // namespace znGeom::internal
