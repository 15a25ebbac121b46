#include "znGeom/planar/polylines/merge_segments.h"

#include <algorithm>

#include "znGeom/foundation/linear/vector.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/planar/polylines/internal/end_grid.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// Both ends of all segments: 2 s is where segment s starts, 2 s + 1 where it ends.
zn::vector<PointFlt> endsOf(const std::deque<Segment>& segments)
{
    zn::vector<PointFlt> ends;
    ends.reserve(2 * static_cast<int>(segments.size()));
    for (const Segment& segment : segments) {
        ends.append({segment.start[0], segment.start[1], segment.start[2]});
        ends.append({segment.end[0], segment.end[1], segment.end[2]});
    }
    return ends;
}

int otherEnd(int end) { return end ^ 1; }

class SegmentJoiner
{
public:
    SegmentJoiner(const std::deque<Segment>& segments, float tolerance)
        : m_ends(endsOf(segments)), m_grid(m_ends, tolerance), m_tolerance(double(tolerance)),
          m_isLaid(static_cast<int>(segments.size()))
    {}

    bool isLaid(int segment) const { return m_isLaid.isSet(segment); }

    /// The line through a segment, as far as it goes on both ways.
    zn::Reference<Polyline> lineFrom(int segment)
    {
        m_isLaid.setBit(segment);
        m_front.clear();
        m_back.clear();
        const int start = 2 * segment, end = otherEnd(start);
        grow(start, end, m_front);
        grow(end, start, m_back);
        return assemble(start, end);
    }

private:
    /// Follows a line beyond its last point; what it passes is appended.
    /// \param prior  the point before the last
    void grow(int tail, int prior, zn::vector<int>& passed)
    {
        for (int near = extension(tail, prior); near >= 0; near = extension(tail, prior)) {
            m_isLaid.setBit(near / 2);
            prior = tail;
            tail = otherEnd(near);
            passed.append(tail);
        }
    }

    /// The near end of the segment with which a line goes on, or -1. Segments that lie on the line's last one are laid.
    int extension(int tail, int prior)
    {
        const Point last(m_ends[tail]), before(m_ends[prior]);
        double leastDistance = 2 * m_tolerance; // meant for the square: from 2/3 on, this reaches less far than the box
        int answer = -1;
        for (const int hit : m_grid.findNear(m_ends[tail])) {
            if (isLaid(hit / 2)) continue;
            const int near = squaredDistance(last, otherEnd(hit)) < squaredDistance(last, hit) ? otherEnd(hit) : hit;
            if (doublesBack(last, before, near)) {
                m_isLaid.setBit(hit / 2);
                continue;
            }
            const double distance = squaredDistance(last, near);
            if (!(leastDistance > distance)) continue;
            leastDistance = distance;
            answer = near;
        }
        return answer;
    }

    double squaredDistance(const Point& point, int end) const { return (Point(m_ends[end]) - point).length2(); }

    /// Whether a segment lies on the last one of a line, the other way round.
    bool doublesBack(const Point& last, const Point& before, int near) const
    {
        const Point from(m_ends[near]), to(m_ends[otherEnd(near)]);
        const Vector along = last - before, away = to - from;
        if (!(dot(along, away) < 0)) return false;
        const double tolerance = 0.01 * std::min(along.length(), away.length());
        return equivalent(from, last, tolerance) && equivalent(to, before, tolerance);
    }

    zn::Reference<Polyline> assemble(int start, int end) const
    {
        zn::vector<Polyline::vertex> vertices;
        vertices.reserve(m_front.size() + m_back.size() + 2);
        const auto append = [&](int at) { vertices.append({Point(m_ends[at]), static_cast<double>(vertices.size())}); };
        for (int i = m_front.size(); i-- > 0;) append(m_front[i]);
        append(start);
        append(end);
        for (const int at : m_back) append(at);
        return new Polyline(vertices.size(), vertices.data());
    }

    zn::vector<PointFlt> m_ends;
    internal::EndGrid m_grid;
    double m_tolerance;
    BitVector m_isLaid;
    zn::vector<int> m_front, m_back; ///< ends that the line has passed, outwards
};

} // namespace

void MergeSegments::operator()(zn::vector<zn::Reference<Polyline>>& lines, const std::deque<Segment>& segments,
                               float tolerance)
{
    lines.clear();
    SegmentJoiner joiner(segments, tolerance);
    for (int segment = 0; segment < static_cast<int>(segments.size()); ++segment)
        if (!joiner.isLaid(segment)) lines.append(joiner.lineFrom(segment));
}

} // namespace znGeom
