/// `SmoothInterpolate2D`: a stroke smoothed, and points at a fixed spacing along it.
#pragma once

#include "znGeom/planar/strokes/interpolate_2d.h"
#include "znGeom/planar/strokes/smooth_2d.h"

namespace znGeom {

/// Smooths the samples as `Smooth2D` does, and walks along the smoothed points with another interpolator. The first
/// sample only says where the filter rests, so the first answer is the first smoothed point, after the second sample.
class ZNGEOM_API SmoothInterpolate2D : public Interpolate2D
{
public:
    /// Walks with a `FltInterpolate2D` that carries. See `Smooth2D` for the numbers.
    explicit SmoothInterpolate2D(int numSteps = 6, float mass = 0.9f, float drag = 0.921f);
    /// \param inner  walks along the smoothed points; null stands for that of the other constructor
    SmoothInterpolate2D(int numSteps, float mass, float drag, zn::Reference<Interpolate2D> inner);
    ~SmoothInterpolate2D() override = default;

    void add_point(const znLinear::Point2Flt& point) override;

    /// Both forms feed the inner interpolator smoothed points until it answers, and are false when it does not and
    /// there are none left. `t` is how far the walk is through the sub-steps of the newest sample: from 0 to 1.
    bool interpolate(znLinear::Point2Flt& out, float* t) override;
    bool interpolate(float step, znLinear::Point2Flt& out, float* t) override;

    /// That of the inner interpolator.
    bool dir(znLinear::Vector2Flt& out) override;

    /// The point handed out last, and the first sample until then.
    void current(znLinear::Point2Flt& out) override;

private:
    template <typename Walk>
    bool feedUntil(const Walk& walk, znLinear::Point2Flt& out, float* t);

    internal::SmoothSteps m_steps;
    float m_invSteps;
    zn::Reference<Interpolate2D> m_inner;
    znLinear::Point2Flt m_position;
    bool m_atStart = true;
};

} // namespace znGeom
