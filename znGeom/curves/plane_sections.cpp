#include "znGeom/curves/plane_sections.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <vector>

#include "znGeom/curves/internal/plane_walk.h"

namespace znGeom {

namespace {

/// The triangles that a plane may cut, as it rises.
class RisingPlane
{
public:
    RisingPlane(const CompactMesh& mesh, const znLinear::Plane& plane)
    {
        const MeshVertex* const vertices = mesh.getVertices();
        for (int t = 0; t < mesh.getNumTriangles(); ++t) {
            double heights[3];
            for (int corner = 0; corner < 3; ++corner)
                heights[corner] = plane.eval(vertices[mesh.getTriangles()[t][corner]].asPoint());
            const auto [low, high] = std::minmax({heights[0], heights[1], heights[2]});
            if (std::isfinite(heights[0] + heights[1] + heights[2])) m_spans.append({low, high, t});
            m_slack = std::max({m_slack, std::fabs(low), std::fabs(high)});
        }
        m_slack *= 1e-12; // heights above the first plane and above another one are rounded apart
        std::sort(m_spans.begin(), m_spans.end(), [](const Span& a, const Span& b) {
            return a.low != b.low ? a.low < b.low : a.triangle < b.triangle;
        });
    }

    /// \param height  above the first plane, not below what it was in the last call
    const zn::vector<int>& trianglesAt(double height)
    {
        for (; m_next < m_spans.size() && m_spans[m_next].low <= height + m_slack; ++m_next) m_reached.append(m_next);
        m_triangles.clear();
        int numKept = 0;
        for (const int span : m_reached) {
            if (m_spans[span].high < height - m_slack) continue;
            m_reached[numKept++] = span;
            m_triangles.append(m_spans[span].triangle);
        }
        m_reached.setSize(numKept);
        return m_triangles;
    }

private:
    struct Span
    {
        double low, high;
        int triangle;
    };

    zn::vector<Span> m_spans; ///< by their lower ends
    zn::vector<int> m_reached, m_triangles;
    int m_next = 0;
    double m_slack = 0;
};

/// Appends the segment of a triangle, from the side that comes down through the plane to the one that goes up.
void appendSegment(const CompactMesh& mesh, const internal::PlaneWalk& walk, int triangle,
                   std::deque<Segment>& segments)
{
    int down = -1, up = -1;
    for (int side = 3 * triangle; side < 3 * triangle + 3; ++side)
        if (walk.crosses(side)) (walk.startsAbove(side) ? down : up) = side;
    if (down < 0 || up < 0) return;
    double ends[2][3];
    for (const int end : {0, 1}) {
        const MeshCoord coord = walk.crossing(end == 0 ? down : up);
        const znLinear::Point place = coord.evaluate(mesh.getVertices(), mesh.getTriangles());
        for (int axis = 0; axis < 3; ++axis) ends[end][axis] = place[axis];
    }
    const Segment segment(ends[0], ends[1]);
    if (!std::equal(segment.start, segment.start + 3, segment.end)) segments.push_back(segment);
}

/// Takes out pairs that lie on one another and run opposite ways, those of sheets that coincide: they would be taken
/// for copies, of which one is left, and the ends of the outlines through them would not meet.
void dropOpposites(std::deque<Segment>& segments)
{
    struct Way
    {
        std::array<float, 6> ends; ///< the lesser one first
        bool isForward;
        std::size_t place;
    };
    std::vector<Way> ways;
    for (const Segment& segment : segments) {
        const bool isForward =
            std::lexicographical_compare(segment.start, segment.start + 3, segment.end, segment.end + 3);
        const float *low = isForward ? segment.start : segment.end, *high = isForward ? segment.end : segment.start;
        ways.push_back({{low[0], low[1], low[2], high[0], high[1], high[2]}, isForward, ways.size()});
    }
    std::sort(ways.begin(), ways.end(), [](const Way& a, const Way& b) {
        return std::tie(a.ends, a.isForward, a.place) < std::tie(b.ends, b.isForward, b.place);
    });
    std::vector<bool> isDropped(segments.size());
    for (std::size_t first = 0, end = 0; first < ways.size(); first = end) {
        while (end < ways.size() && ways[end].ends == ways[first].ends) ++end;
        for (std::size_t back = first, forward = end; back < forward; ++back) {
            if (ways[back].isForward || !ways[--forward].isForward) break;
            isDropped[ways[back].place] = isDropped[ways[forward].place] = true;
        }
    }
    std::size_t place = 0;
    std::erase_if(segments, [&](const Segment&) { return isDropped[place++]; });
}

} // namespace

bool meshPlaneSections(const CompactMesh& mesh, const znLinear::Plane& plane, double step, int count,
                       const std::function<void(int, const std::deque<Segment>&)>& visit, znUtil::Progress& progress)
{
    RisingPlane rising(mesh, plane);
    std::deque<Segment> segments;
    for (int i = 0; i < count; ++i) {
        if (progress.cancelled()) return false;
        const double height = i * step;
        const internal::PlaneWalk walk(mesh, {plane.point + plane.normal.asVector() * height, plane.normal}, true);
        segments.clear();
        for (const int triangle : rising.trianglesAt(height)) appendSegment(mesh, walk, triangle, segments);
        dropOpposites(segments);
        visit(i, segments);
        progress.set((i + 1.0) / count);
    }
    return true;
}

} // namespace znGeom
