/// `FltInterpolate2D`: points at a fixed spacing along a polyline that grows.
#pragma once

#include <algorithm>
#include <cmath>

#include "znGeom/planar/strokes/interpolate_2d.h"

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
///
/// Used under its own type, a walk compiles to a loop without calls that keeps its numbers in registers.
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
    static float rounded(float product);
    static float lengthOf(const znLinear::Vector2Flt& way);

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

/// A product as it is rounded. A compiler that may join products and sums, as GCC does for processors that can, does
/// not see through this function: points are the same bits however the program is compiled that includes this.
inline float FltInterpolate2D::rounded(float product)
{
#if defined(__GNUC__) && !defined(__clang__)
#if defined(__x86_64__)
    __asm__("" : "+x"(product));
#else
    __asm__("" : "+m"(product));
#endif
#endif
    return product;
}

inline float FltInterpolate2D::lengthOf(const znLinear::Vector2Flt& way)
{
    // The same bits as of a root in double, narrowed.
    return std::sqrt(rounded(way.dx * way.dx) + rounded(way.dy * way.dy));
}

inline void FltInterpolate2D::add_point(const znLinear::Point2Flt& point)
{
    ++m_numPoints;
    if (m_numPoints == 1) {
        m_end = m_position = point;
        return;
    }
    if (m_carry) {
        m_leftover = m_remaining;
        m_position = m_end;
    }
    m_start = m_position;
    m_end = point;
    m_length = lengthOf(m_end - m_start);
    if (m_length > 0) {
        m_invLength = 1 / m_length;
        m_direction = (m_end - m_start) * m_invLength;
    } else {
        m_length = m_invLength = 0;
        m_direction = znLinear::Vector2Flt::zero;
    }
    m_remaining = m_length;
    if (m_carry) {
        m_position.x -= rounded(m_leftover * m_direction.dx);
        m_position.y -= rounded(m_leftover * m_direction.dy);
        m_remaining += m_leftover;
    }
}

inline bool FltInterpolate2D::interpolate(float step, znLinear::Point2Flt& out, float* t)
{
    // In registers throughout: a point read right after its coordinates were written one by one is a long wait.
    float x = m_position.x, y = m_position.y, remaining = m_remaining;
    if (!m_atStart) [[likely]] {
        if (!(remaining >= step)) return false;
        // What was left over is more than a step only where the step has become shorter.
        const float walked = std::max(m_leftover, step);
        m_leftover = 0;
        m_position.x = x += rounded(walked * m_direction.dx);
        m_position.y = y += rounded(walked * m_direction.dy);
        m_remaining = remaining -= walked;
    } else {
        if (m_numPoints < 2) return false;
        m_atStart = false;
    }
    const float reached = m_length == 0 ? 0.0f : 1 - rounded(m_invLength * remaining);
    out.set(x, y);
    if (t) *t = reached;
    return true;
}

} // namespace znGeom
