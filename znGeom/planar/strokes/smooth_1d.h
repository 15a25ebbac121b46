/// `Smooth1D`: one axis of the filter that smooths strokes.
#pragma once

#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// A mass that is drawn towards each value, with drag. It moves in several sub-steps for each value, and its
/// acceleration changes at a constant rate over them, so that no sub-step shows a kink. All in `float`.
///
/// Values that stay the same are reached, and quietly, where numSteps * (1 - drag) / mass is about a half. Near 1 the
/// mass overshoots, and somewhat above that it swings ever further: more sub-steps ask for more drag or a greater mass.
class ZNGEOM_API Smooth1D
{
public:
    /// \param mass  how slowly the mass follows. With 0 it does not follow at all
    /// \param drag  the part of the velocity that is lost at each value. With 1 the mass does not move
    Smooth1D(float mass, float drag) : m_invMass(mass == 0 ? 0 : 1 / mass), m_drag(drag) {}

    /// Moves towards a value.
    ///
    /// \param numSteps   the number of sub-steps; becomes 0 at the first value, where the mass is put and rests. One
    ///                   that is not above 0 becomes 0 too, and puts the mass at the value
    /// \param positions  receives the position after each sub-step
    void step(float value, int& numSteps, float* positions);

private:
    float m_invMass;
    float m_drag;
    float m_velocity = 0, m_acceleration = 0, m_position = 0; ///< the unit of time is a sub-step
    bool m_started = false;
};

} // namespace znGeom
