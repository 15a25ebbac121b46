/// `Interpolate2D`: what turns the samples of a pen or mouse stroke into the points that a brush paints at.
#pragma once

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom {

/// Samples go in as they arrive, and points come out:
///
///     zn::Reference<Interpolate2D> stroke = new SmoothInterpolate2D;
///     // for each sample
///     stroke->add_point(sample);
///     while (stroke->interpolate(spacing, point, nullptr)) dab(point);
///
/// All points that a sample has to give are taken before the next is added. An object is for one stroke and is then
/// dropped; it belongs to one thread. Adding and taking points take no memory and constant time, but for a filter's
/// steps.
class ZNGEOM_API Interpolate2D : public zn::ReferenceCount
{
public:
    ~Interpolate2D() override = default;

    /// Adds the next sample.
    virtual void add_point(const znLinear::Point2Flt& point) = 0;

    /// Jumps to the end of what has been added.
    ///
    /// \param out  the point; unchanged when there is none
    /// \param t    how far the point is between the last two samples, from 0 to 1; unchanged when there is no point.
    ///             May be null
    /// \return false when there is nothing left, until more is added
    virtual bool interpolate(znLinear::Point2Flt& out, float* t) = 0;

    /// Walks on by `step`, which must be above 0, or there is no end of points. The first answer is where the stroke
    /// begins. Otherwise as the jump.
    virtual bool interpolate(float step, znLinear::Point2Flt& out, float* t) = 0;

    /// The unit direction of the walk. False, with `out` unchanged, while there is none.
    virtual bool dir(znLinear::Vector2Flt& out) = 0;

    /// The point handed out last, or where the walk stands.
    virtual void current(znLinear::Point2Flt& out) = 0;
};

} // namespace znGeom
