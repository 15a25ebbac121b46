#include "znGeom/curves/plane_segments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "znGeom/curves/internal/plane_walk.h"
#include "znGeom/foundation/linear/range.h"

namespace znGeom {

namespace {

/// Which of some heights lie within the heights of the corners of a triangle, or so near that rounding decides.
std::pair<int, int> heightsBeside(const MeshVertex* const corners[3], const znLinear::Normal& normal,
                                  const zn::vector<double>& heights)
{
    znLinear::Range1d range;
    double largest = 0;
    for (int corner = 0; corner < 3; ++corner) {
        const znLinear::Point point = corners[corner]->asPoint();
        range.include(dot(normal, point.asVector()));
        largest = std::max({largest, std::fabs(point.x), std::fabs(point.y), std::fabs(point.z)});
    }
    if (range.isEmpty()) return {0, 0};
    const double slack = 1e-14 * largest;
    const double* const first = std::lower_bound(heights.begin(), heights.end(), range.min - slack);
    const double* const end = std::upper_bound(first, heights.end(), range.max + slack);
    return {static_cast<int>(first - heights.begin()), static_cast<int>(end - heights.begin())};
}

/// From where the plane comes down over a side to where it goes up; the surface faces to the right of that.
std::optional<Segment> segmentIn(const CompactMesh& mesh, const internal::PlaneWalk& walk, int triangle)
{
    znLinear::Point ends[2];
    int numCrossed = 0;
    for (int side = 3 * triangle; side < 3 * triangle + 3; ++side) {
        if (!walk.crosses(side)) continue;
        ++numCrossed;
        ends[walk.leadsUp(side) ? 1 : 0] = walk.crossing(side).evaluate(mesh.getVertices(), mesh.getTriangles());
    }
    const Segment segment(&ends[0].x, &ends[1].x);
    const bool hasLength = !std::equal(segment.start, segment.start + 3, segment.end);
    return numCrossed == 2 && hasLength ? std::optional(segment) : std::nullopt;
}

/// Takes out pairs that lie on one another and run opposite ways: what is between them is nothing.
void dropOpposites(std::deque<Segment>& segments)
{
    using Ends = std::array<float, 6>;
    struct Way
    {
        Ends ends; ///< the lesser one first
        bool isForward;
        std::size_t place;
    };
    std::vector<Way> ways;
    for (const Segment& segment : segments) {
        const auto& [a, b] = segment;
        const bool isForward = std::lexicographical_compare(a, a + 3, b, b + 3);
        const float *low = isForward ? a : b, *high = isForward ? b : a;
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

zn::vector<std::deque<Segment>> meshPlaneSegments(const CompactMesh& mesh, const znLinear::Normal& normal,
                                                  const zn::vector<double>& heights)
{
    zn::vector<internal::PlaneWalk> walks;
    for (const double height : heights)
        walks.append(internal::PlaneWalk(mesh, {(normal.asVector() * height).asPoint(), normal}, true));
    zn::vector<std::deque<Segment>> segments(heights.size());
    const MeshVertex* const vertices = mesh.getVertices();
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = mesh.getTriangles()[t].corners;
        const MeshVertex* const corners[] = {vertices + a, vertices + b, vertices + c};
        const auto [first, end] = heightsBeside(corners, normal, heights);
        for (int i = first; i < end; ++i)
            if (const auto segment = segmentIn(mesh, walks[i], t)) segments[i].push_back(*segment);
    }
    for (std::deque<Segment>& section : segments) dropOpposites(section);
    return segments;
}

} // namespace znGeom
