#include "znGeom/planar/strokes/smooth_interpolate_2d.h"

#include "znGeom/planar/strokes/flt_interpolate_2d.h"

using namespace znLinear;

namespace znGeom {

SmoothInterpolate2D::SmoothInterpolate2D(int numSteps, float mass, float drag)
    : SmoothInterpolate2D(numSteps, mass, drag, nullptr)
{}

SmoothInterpolate2D::SmoothInterpolate2D(int numSteps, float mass, float drag, zn::Reference<Interpolate2D> inner)
    : m_steps(mass, drag, numSteps), m_invSteps(numSteps > 0 ? 1 / static_cast<float>(numSteps) : 0),
      m_inner(inner ? std::move(inner) : zn::Reference<Interpolate2D>(new FltInterpolate2D(true)))
{}

void SmoothInterpolate2D::add_point(const Point2Flt& point)
{
    m_steps.add(point);
    if (m_atStart) m_position = point;
    m_atStart = false;
}

template <typename Walk>
bool SmoothInterpolate2D::feedUntil(const Walk& walk, Point2Flt& out, float* t)
{
    while (!walk()) {
        Point2Flt smoothed;
        if (!m_steps.read(smoothed)) return false;
        m_inner->add_point(smoothed);
    }
    if (t) {
        *t = (static_cast<float>(m_steps.numRead() - 1) + *t) * m_invSteps;
        if (*t < 0) *t = 0;
    }
    m_position = out;
    return true;
}

bool SmoothInterpolate2D::interpolate(Point2Flt& out, float* t)
{
    return feedUntil([&] { return m_inner->interpolate(out, t); }, out, t);
}

bool SmoothInterpolate2D::interpolate(float step, Point2Flt& out, float* t)
{
    return feedUntil([&] { return m_inner->interpolate(step, out, t); }, out, t);
}

bool SmoothInterpolate2D::dir(Vector2Flt& out) { return m_inner->dir(out); }

void SmoothInterpolate2D::current(Point2Flt& out) { out = m_position; }

} // namespace znGeom
