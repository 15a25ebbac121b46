#include "znGeom/planar/polylines/polyline_project.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom {

using znLinear::ParamLine;
using znLinear::Point;

namespace {

/// Some segments in a row, as seen from a point: which of them may be nearer than what is known.
class SegmentBlock
{
public:
    static constexpr int mostSegments = 256;

    /// \param vertices  one more than segments
    /// \param numLeft   how many there are from the first one to the end of the line
    SegmentBlock(const Polyline::vertex* vertices, int numSegments, int numLeft, const Point& p)
        : m_numSegments(numSegments)
    {
        constexpr int prefetchDistance = 128;
        for (int i = 0; i <= numSegments; ++i) {
            znUtil::prefetch(vertices + std::min(i + prefetchDistance, numLeft - 1));
            const Point& place = vertices[i].point;
            m_x[i] = place.x - p.x, m_y[i] = place.y - p.y, m_z[i] = place.z - p.z;
        }
    }

    /// False only where no segment is nearer than the reach, however coordinates are rounded on the way.
    bool hasWithin(double reach)
    {
        measure(m_x, m_y, m_z, m_numSegments, reach * reach, m_excess);
        return countWithin(m_excess, m_numSegments) > 0;
    }

    /// Of one segment, by the last call.
    bool isWithin(int segment) const { return isNear(m_excess[segment]); }

private:
    /// True where numbers were too large, as well.
    static bool isNear(double excess) { return !(excess > 0 && excess < std::numeric_limits<double>::max()); }

    /// How much farther than the reach segments are, squared and times their squared length: this takes no division.
    ZNGEOM_CLONES static void measure(const double* __restrict x, const double* __restrict y,
                                      const double* __restrict z, int count, double reach2, double* __restrict excess)
    {
        // What places on a segment are rounded by is little beside the distance of its first vertex.
        constexpr double kept = 1 - 1e-12, smallest = 0x1p-900;
        for (int i = 0; i < count; ++i) {
            const double dx = x[i + 1] - x[i], dy = y[i + 1] - y[i], dz = z[i + 1] - z[i];
            const double length2 = dx * dx + dy * dy + dz * dz;
            const double start2 = x[i] * x[i] + y[i] * y[i] + z[i] * z[i];
            const double along = -(x[i] * dx + y[i] * dy + z[i] * dz);
            const double raised = along > 0 ? along : 0;
            const double within = raised < length2 ? raised : length2;
            excess[i] = (kept * start2 - reach2) * length2 - (2 * along - within) * within - smallest;
        }
    }

    ZNGEOM_CLONES static long countWithin(const double* excess, int count)
    {
        long numNear = 0;
        for (int i = 0; i < count; ++i) numNear += isNear(excess[i]) ? 1 : 0;
        return numNear;
    }

    int m_numSegments;
    double m_x[mostSegments + 1], m_y[mostSegments + 1], m_z[mostSegments + 1]; ///< of vertices, from the point
    double m_excess[mostSegments];
};

/// The place nearest to a point so far.
struct NearestPlace
{
    double distance2 = 1e300, parameter = -1;

    void include(const Polyline::vertex& from, const Polyline::vertex& to, const Point& p, Point& closest)
    {
        const ParamLine segment(from.point, to.point);
        const double u = projectParam(p, segment);
        const Point candidate = u < 0 ? from.point : u > 1 ? to.point : segment.eval(u);
        const double own = znLinear::distance2(p, candidate);
        if (!(distance2 > own)) return;
        distance2 = own;
        closest = candidate;
        parameter = u < 0 ? from.parameter : u > 1 ? to.parameter : internal::parameterAt(from, to, u);
    }
};

} // namespace

double PolylineProjectPt::project(const Point& p, Point& closest, double& distance) const
{
    const int numSegments = m_line ? m_line->getNumVertices() - 1 : 0;
    // Some of the segments first: what is farther than the nearest of these can't be the answer.
    constexpr int drawnApart = 1024;
    NearestPlace drawn, nearest;
    Point ignored;
    const double grain =
        32 * std::numeric_limits<double>::epsilon() * std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    for (int i = 0; i < numSegments; i += drawnApart)
        drawn.include(m_line->getVertex(i), m_line->getVertex(i + 1), p, ignored);
    for (int begin = 0; begin < numSegments; begin += SegmentBlock::mostSegments) {
        const int count = std::min(SegmentBlock::mostSegments, numSegments - begin);
        const Polyline::vertex* const vertices = &m_line->getVertex(begin);
        SegmentBlock block(vertices, count, numSegments + 1 - begin, p);
        if (!block.hasWithin(std::sqrt(std::min(drawn.distance2, nearest.distance2)) + grain)) continue;
        for (int i = 0; i < count; ++i)
            if (block.isWithin(i)) nearest.include(vertices[i], vertices[i + 1], p, closest);
    }
    distance = std::sqrt(nearest.distance2);
    return nearest.parameter;
}

double PolylineProjectPt::project(const Point& p, Point& closest) const
{
    double distance;
    return project(p, closest, distance);
}

double PolylineProjectPt::project(const Point& p) const
{
    Point closest;
    return project(p, closest);
}

bool PolylineProjectPt::adjust(double& t1, double& t2) const
{
    if (!m_line || !m_line->getClosed()) return false;
    const double first = m_line->getVertex(0).parameter;
    const double last = m_line->getVertex(m_line->getNumVertices() - 1).parameter;
    const auto isEnd = [&](double t) { return t == first || t == last; };
    if (isEnd(t1) == isEnd(t2)) return false;
    double& end = isEnd(t1) ? t1 : t2;
    const double other = isEnd(t1) ? t2 : t1;
    end = std::fabs(other - last) > std::fabs(other - first) ? first : last;
    return true;
}

} // namespace znGeom
