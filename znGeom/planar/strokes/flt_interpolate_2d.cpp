#include "znGeom/planar/strokes/flt_interpolate_2d.h"

using namespace znLinear;

namespace znGeom {

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

bool FltInterpolate2D::dir(Vector2Flt& out)
{
    if (m_numPoints < 2 || m_length == 0) return false;
    out = m_direction;
    return true;
}

void FltInterpolate2D::current(Point2Flt& out) { out = m_position; }

} // namespace znGeom
