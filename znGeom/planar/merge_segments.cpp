#include "znGeom/planar/merge_segments.h"

#include <algorithm>

#include "znGeom/planar/internal/end_grid.h"

namespace znGeom {

namespace {

using znLinear::Point;
using znLinear::PointFlt;
using znLinear::Vector;

class Merging
{
public:
    Merging(const std::deque<Segment>& segments, float tolerance)
        : m_ends(allEnds(segments)), m_grid(m_ends, tolerance), m_isUsed(static_cast<int>(segments.size()), false),
          m_tolerance(tolerance)
    {}

    void appendTo(zn::vector<zn::Reference<Polyline>>& lines)
    {
        for (int segment = 0; segment < m_isUsed.size(); ++segment)
            if (!m_isUsed[segment]) lines.append(new Polyline(lineFrom(segment)));
    }

private:
    /// The start of segment s is number 2 * s, its end the next one.
    static zn::vector<PointFlt> allEnds(const std::deque<Segment>& segments)
    {
        zn::vector<PointFlt> ends;
        ends.reserve(2 * static_cast<int>(segments.size()));
        for (const Segment& segment : segments) {
            ends.append(PointFlt(segment.start));
            ends.append(PointFlt(segment.end));
        }
        return ends;
    }

    Polyline lineFrom(int segment)
    {
        m_isUsed[segment] = true;
        zn::vector<PointFlt> front = {m_ends[2 * segment]}, back = {m_ends[2 * segment + 1]};
        grow(front, back.front());
        grow(back, front.front());
        std::reverse(front.begin(), front.end());
        front.append(back);
        zn::vector<Polyline::vertex> vertices;
        vertices.reserve(front.size());
        for (const PointFlt& point : front) vertices.append({point, static_cast<double>(vertices.size())});
        return Polyline(vertices.size(), vertices.data());
    }

    /// \param before  the place before the first of the run
    void grow(zn::vector<PointFlt>& run, const PointFlt& before)
    {
        for (PointFlt prior = before;;) {
            const PointFlt tail = run.back();
            const int next = extension(tail, prior);
            if (next < 0) return;
            m_isUsed[next / 2] = true;
            run.append(m_ends[otherEnd(next)]);
            prior = tail;
        }
    }

    /// The end at which an unused segment goes on from the end of a line, or -1. Copies of the line's last segment
    /// become used.
    int extension(const Point& tail, const Point& prior)
    {
        double best = 2 * m_tolerance;
        int answer = -1;
        m_grid.findNear(PointFlt(tail), m_found);
        for (const int hit : m_found) {
            if (m_isUsed[hit / 2]) continue;
            const bool isOtherNearer = distance2(tail, at(otherEnd(hit))) < distance2(tail, at(hit));
            const int near = isOtherNearer ? otherEnd(hit) : hit;
            if (isCopy(tail, prior, at(near), at(otherEnd(near)))) {
                m_isUsed[hit / 2] = true;
                continue;
            }
            const double apart2 = distance2(tail, at(near));
            if (!(best > apart2)) continue;
            best = apart2;
            answer = near;
        }
        return answer;
    }

    /// Whether a segment leads back along the last one of the line.
    static bool isCopy(const Point& tail, const Point& prior, const Point& near, const Point& far)
    {
        Vector last = tail - prior, segment = far - near;
        const double close = 0.01 * std::min(last.length(), segment.length());
        if (!last.normalize() || !segment.normalize() || !(dot(last, segment) < 0)) return false;
        return equivalent(near, tail, close) && equivalent(far, prior, close);
    }

    static int otherEnd(int end) { return end ^ 1; }
    Point at(int end) const { return m_ends[end]; }

    zn::vector<PointFlt> m_ends;
    internal::EndGrid m_grid;
    zn::vector<bool> m_isUsed;
    std::vector<int> m_found;
    double m_tolerance;
};

} // namespace

void MergeSegments::operator()(zn::vector<zn::Reference<Polyline>>& lines, const std::deque<Segment>& segments,
                               float tolerance) const
{
    lines.clear();
    Merging(segments, tolerance).appendTo(lines);
}

} // namespace znGeom
