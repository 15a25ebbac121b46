/// `FltInterpolate2D`: points at a fixed spacing along a polyline that grows.
#pragma once

#include "znGeom/planar/interpolate_2d.h"

namespace znGeom {

/// Walks along the samples and hands out points that are a step apart, measured along the line. All in `float`.
///
/// With `carry` the spacing goes on round corners: what is left of a segment, less than a step, counts for the next
/// one. The walk then begins that far behind the corner, on the next segment drawn backwards. Without, what is left is
/// dropped, and the next segment begins at the point handed out last: corners are cut, and all points lie on the way
/// from the last one to the newest sample.
///
/// A step may be of another length than the one before. A sample at the place of the one before is a segment of length
/// 0, which gives no points. After several samples in a row, without any point taken in between, only the last segment
/// is walked; what was left of the one before it is then handed over in one piece, as the first step, or backwards from
/// the corner where that is the first answer of all, whose `t` is then below 0.
class ZNGEOM_API FltInterpolate2D : public Interpolate2D
{
public:
    explicit FltInterpolate2D(bool carry = true) : m_carry(carry) {}
    ~FltInterpolate2D() override = default;

    void add_point(const znLinear::Point2Flt& point) override;

    /// False before the second sample. The first answer is where the walk stands, with a `t` of 0; all others are the
    /// newest sample, with a `t` of 1.
    bool interpolate(znLinear::Point2Flt& out, float* t) override;

    /// False before the second sample, and where less than a step is left. The first answer is the first sample. `t` is
    /// the part of the newest segment that has been walked; 0 when it has no length.
    bool interpolate(float step, znLinear::Point2Flt& out, float* t) override;

    /// The direction of the newest segment; false before the second sample, and when it has no length.
    bool dir(znLinear::Vector2Flt& out) override;

    /// Where the walk stands: with `carry`, behind the start of a new segment. The first sample when there is no other.
    void current(znLinear::Point2Flt& out) override;

private:
    void measureSegment();

    int m_numPoints = 0;
    znLinear::Point2Flt m_start, m_end; ///< of the newest segment
    znLinear::Point2Flt m_position;
    float m_length = 0;
    float m_invLength = 0; ///< 0 when the length is 0
    float m_remaining = 0; ///< from the position to the end
    znLinear::Vector2Flt m_direction;
    float m_leftover = 0; ///< of the segment before
    bool m_atStart = true;
    bool m_carry;
};

} // namespace znGeom
