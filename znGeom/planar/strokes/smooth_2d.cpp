#include "znGeom/planar/strokes/smooth_2d.h"

#include <algorithm>

using namespace znLinear;

namespace znGeom {
namespace internal {

SmoothSteps::SmoothSteps(float mass, float drag, int numSteps)
    : m_filterX(mass, drag), m_filterY(mass, drag), m_numSteps(std::max(numSteps, 0)), m_x(m_numSteps), m_y(m_numSteps)
{}

void SmoothSteps::add(const Point2Flt& point)
{
    m_available = m_numSteps;
    m_filterX.step(point.x, m_available, m_x.data());
    m_filterY.step(point.y, m_available, m_y.data());
    m_readIndex = m_numSteps - m_available;
}

bool SmoothSteps::read(Point2Flt& out)
{
    if (m_readIndex >= m_available) return false;
    out.set(m_x[m_readIndex], m_y[m_readIndex]);
    ++m_readIndex;
    return true;
}

} // namespace internal

Smooth2D::Smooth2D(float mass, float drag, int numSteps) : m_steps(mass, drag, numSteps) {}

void Smooth2D::add_point(const Point2Flt& point) { m_steps.add(point); }

bool Smooth2D::interpolate(Point2Flt& out) { return m_steps.read(out); }

} // namespace znGeom
