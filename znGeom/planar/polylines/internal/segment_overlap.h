/// Which part of a segment lies beside another one.
#pragma once

#include <optional>

#include "znGeom/foundation/linear/range.h"
#include "znGeom/planar/polylines/polyline.h"

namespace znGeom::internal {

/// A place on a segment and the one beside it on the other polyline.
struct PlaceBeside
{
    double u;         ///< 0 at the beginning of the segment, 1 at its end
    double parameter; ///< on the other polyline
    znLinear::Point beside;
};

/// From one place on a segment to a later one, or the same.
struct SegmentOverlap
{
    PlaceBeside begin, end;

    double size() const { return end.u - begin.u; }
    znLinear::Range1d rangeB() const { return {begin.parameter, end.parameter}; }

    /// Grows to the outer ends of both; of ends at one place, the one counts that makes the way on the other polyline
    /// longer.
    void unite(const SegmentOverlap& other);
};

/// A segment and one of another polyline.
class SegmentPair
{
public:
    SegmentPair(const znLinear::Point& from, const znLinear::Point& to, const Polyline::vertex& otherFrom,
                const Polyline::vertex& otherTo)
        : m_from(from), m_to(to), m_otherFrom(otherFrom), m_otherTo(otherTo)
    {}

    /// The part that lies within a cylinder about the other segment, between its ends.
    std::optional<SegmentOverlap> overlap(double tolerance) const;

private:
    const znLinear::Point &m_from, &m_to;
    const Polyline::vertex &m_otherFrom, &m_otherTo;
};

} // namespace znGeom::internal
