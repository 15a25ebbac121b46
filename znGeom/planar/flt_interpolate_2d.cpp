#include "znGeom/planar/flt_interpolate_2d.h"

#include <algorithm>
#include <cmath>

using namespace znLinear;

namespace znGeom {

void FltInterpolate2D::add_point(const Point2Flt& point)
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
    measureSegment();
    m_remaining = m_length;
    if (m_carry) {
        m_position -= m_leftover * m_direction;
        m_remaining += m_leftover;
    }
}

void FltInterpolate2D::measureSegment()
{
    m_length = static_cast<float>(std::sqrt(double{distance2(m_start, m_end)}));
    if (m_length > 0) {
        m_invLength = 1 / m_length;
        m_direction = (m_end - m_start) * m_invLength;
    } else {
        m_length = m_invLength = 0;
        m_direction = Vector2Flt::zero;
    }
}

bool FltInterpolate2D::interpolate(Point2Flt& out, float* t)
{
    if (m_numPoints < 2) return false;
    float reached = 0;
    if (m_atStart) {
        m_atStart = false;
    } else {
        if (!(m_remaining > 0)) return false;
        reached = 1;
        m_position = m_end;
        m_remaining = 0;
    }
    out = m_position;
    if (t) *t = reached;
    return true;
}

bool FltInterpolate2D::interpolate(float step, Point2Flt& out, float* t)
{
    if (m_numPoints < 2) return false;
    if (m_atStart) {
        m_atStart = false;
    } else {
        if (!(m_remaining >= step)) return false;
        // Only a step that is shorter than the one before can be less than what was left over.
        const float walked = std::max(m_leftover, step);
        m_leftover = 0;
        m_position += walked * m_direction;
        m_remaining -= walked;
    }
    out = m_position;
    if (t) *t = m_length == 0 ? 0.0f : 1 - m_invLength * m_remaining;
    return true;
}

bool FltInterpolate2D::dir(Vector2Flt& out)
{
    if (m_numPoints < 2 || m_length == 0) return false;
    out = m_direction;
    return true;
}

void FltInterpolate2D::current(Point2Flt& out) { out = m_position; }

} // namespace znGeom
