#include "znGeom/planar/strokes/smooth_1d.h"

#include <cstdint>

namespace znGeom {

void Smooth1D::step(float value, int& numSteps, float* positions)
{
    if (!m_started || numSteps <= 0) {
        m_position = value;
        m_started = true;
        numSteps = 0;
        return;
    }
    const auto count = static_cast<float>(numSteps);
    const auto sumOfSteps = static_cast<float>(std::int64_t{numSteps} * (std::int64_t{numSteps} + 1) / 2);
    const float target = (1 - m_drag) * ((value - m_position) * m_invMass + m_velocity);
    const float jerk = (target - m_velocity - count * m_acceleration) / sumOfSteps;
    for (int i = 0; i < numSteps; ++i) {
        m_acceleration += jerk;
        m_velocity += m_acceleration;
        m_position += m_velocity;
        positions[i] = m_position;
    }
}

} // namespace znGeom
