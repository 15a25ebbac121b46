#include "znGeom/planar/polylines/overlap.h"

#include <algorithm>
#include <optional>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/planar/polylines/internal/segment_overlap.h"
#include "znGeom/planar/polylines/internal/stretch_tree.h"
#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom {

namespace {

using internal::SegmentOverlap;
using internal::SegmentPair;
using znLinear::Range1d;
using znLinear::Range3d;

/// What a whole segment of one polyline has beside it on the other one.
struct Hit
{
    Range1d rangeA;
    double beginB, endB;
    double amount, distance;

    bool isAscending() const { return endB >= beginB; }
    Range1d rangeB() const { return {beginB, endB}; }
};

/// Looks for the segments of a polyline beside a segment of another one.
class Beside
{
public:
    Beside(const Polyline& a, const Polyline& b, PolylineBBoxCache& boxes, double tolerance)
        : m_a(a), m_b(b), m_tolerance(tolerance), m_touching(1e-9 * b.getDomain().size()),
          m_tree(allBoxes(b, boxes), [](Range3d first, const Range3d& second) {
              first.include(second);
              return first;
          })
    {}

    std::optional<Hit> at(int segment) const
    {
        const Polyline::vertex &from = m_a.getVertex(segment), &to = m_a.getVertex(segment + 1);
        Range3d box;
        box.set(from.point);
        box.include(to.point);
        std::optional<SegmentOverlap> longest, current;
        const auto close = [&] {
            if (current && (!longest || current->size() > longest->size())) longest = current;
        };
        m_tree.walk(
            0, m_b.getNumVertices() - 1, [&](const Range3d& other) { return !other.intersects(box, m_tolerance); },
            [&](int other) {
                const SegmentPair pair(from.point, to.point, m_b.getVertex(other), m_b.getVertex(other + 1));
                if (const auto part = pair.overlap(m_tolerance)) {
                    if (current && distance(current->rangeB(), part->rangeB()) <= m_touching)
                        current->unite(*part);
                    else {
                        close();
                        current = part;
                    }
                }
                return true;
            });
        close();
        if (!longest) return std::nullopt;
        return hitOf(from, to, *longest);
    }

private:
    static zn::vector<Range3d> allBoxes(const Polyline& line, PolylineBBoxCache& boxes)
    {
        zn::vector<Range3d> all;
        all.reserve(line.getNumVertices() - 1);
        for (int i = 0; i + 1 < line.getNumVertices(); ++i) all.append(boxes.getSegmentBBox(i));
        return all;
    }

    Hit hitOf(const Polyline::vertex& from, const Polyline::vertex& to, const SegmentOverlap& part) const
    {
        const znLinear::ParamLine segment(from.point, to.point);
        const znLinear::Point begin = segment.eval(part.begin.u), end = segment.eval(part.end.u);
        Hit hit;
        hit.rangeA = {internal::parameterAt(from, to, part.begin.u), internal::parameterAt(from, to, part.end.u)};
        hit.beginB = part.begin.parameter;
        hit.endB = part.end.parameter;
        hit.amount = distance(begin, end);
        hit.distance = std::max(distance(begin, part.begin.beside), distance(end, part.end.beside));
        return hit;
    }

    const Polyline &m_a, &m_b;
    double m_tolerance, m_touching;
    internal::StretchTree<Range3d> m_tree;
};

/// Hits in a row.
class Run
{
public:
    Range1d rangeA, rangeB;
    double sum = 0, maxDistance = -1;
    bool isAscending = true;

    Run(const Polyline& b, bool sameDirection)
        : m_b(&b), m_sameDirection(sameDirection), m_maxGap(0.1 * b.getDomain().size())
    {}

    /// \return false if the hit does not go on where the run ends
    bool extend(const Hit& hit)
    {
        if (rangeA.isEmpty())
            isAscending = hit.isAscending();
        else if (m_sameDirection && (!hit.isAscending() || !isAscending))
            return false;
        else if (distance(rangeB, hit.rangeB()) > m_maxGap)
            return false;
        rangeA.include(hit.rangeA);
        rangeB.include(hit.rangeB());
        sum += hit.amount;
        maxDistance = std::max(maxDistance, hit.distance);
        return true;
    }

    double length() const
    {
        constexpr double tooShort = 1e-6;
        return rangeA.isEmpty() || rangeB.size() < tooShort ? 0 : m_b->getLength(rangeB.min, rangeB.max);
    }

private:
    const Polyline* m_b;
    bool m_sameDirection;
    double m_maxGap;
};

/// The longest of all runs.
struct Longest
{
    Run run;
    double length = 0;

    void offer(const Run& other)
    {
        const double otherLength = other.length();
        if (!(otherLength > length)) return;
        run = other;
        length = otherLength;
    }
};

Longest longestRun(const Polyline& a, const Polyline& b, const Beside& beside, bool sameDirection)
{
    const Run none(b, sameDirection);
    Run current = none;
    Longest longest{none};
    for (int i = 0; i + 1 < a.getNumVertices(); ++i) {
        const std::optional<Hit> hit = beside.at(i);
        if (hit && current.extend(*hit)) continue;
        longest.offer(current);
        current = none;
        if (hit) current.extend(*hit);
    }
    longest.offer(current);
    return longest;
}

Range1d snapped(Range1d range, const Polyline& line, double endTolerance)
{
    const Range1d domain = line.getDomain();
    const znLinear::Point &first = line.getVertex(0).point, &last = line.getVertex(line.getNumVertices() - 1).point;
    if (distance(line.eval(range.min), first) < endTolerance) range.min = domain.min;
    if (distance(line.eval(range.max), last) < endTolerance) range.max = domain.max;
    return range;
}

} // namespace

bool overlap(const Polyline& a, const Polyline& b, double tolerance, double endTolerance, bool sameDirection,
             Range1d& rangeA, Range1d& rangeB, double& sum, double& maxDistance, double& length, bool& reversed)
{
    PolylineBBoxCache boxes(b);
    return overlap(a, b, boxes, tolerance, endTolerance, sameDirection, rangeA, rangeB, sum, maxDistance, length,
                   reversed);
}

bool overlap(const Polyline& a, const Polyline& b, PolylineBBoxCache& boxes, double tolerance, double endTolerance,
             bool sameDirection, Range1d& rangeA, Range1d& rangeB, double& sum, double& maxDistance, double& length,
             bool& reversed)
{
    if (a.getNumVertices() < 2 || b.getNumVertices() < 2) return false;
    if (!a.getBoundingBox().intersects(b.getBoundingBox(), tolerance)) return false;
    const Longest longest = longestRun(a, b, Beside(a, b, boxes, tolerance), sameDirection);
    if (!(longest.length > 0)) return false;
    rangeA = snapped(longest.run.rangeA, a, endTolerance);
    rangeB = snapped(longest.run.rangeB, b, endTolerance);
    sum = longest.run.sum;
    maxDistance = longest.run.maxDistance;
    length = longest.length;
    reversed = !longest.run.isAscending;
    return true;
}

} // namespace znGeom
