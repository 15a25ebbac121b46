/// `Smooth2D`: several smoothed points for each sample of a stroke.
#pragma once

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/planar/strokes/smooth_1d.h"

namespace znGeom {
namespace internal {

/// The filter for both axes, and the sub-steps of the newest sample that have not been read.
class ZNGEOM_API SmoothSteps
{
public:
    /// A number of steps below 1 gives no sub-steps at all.
    SmoothSteps(float mass, float drag, int numSteps);

    int size() const { return m_numSteps; }
    /// How many sub-steps of the newest sample have been read.
    int numRead() const { return m_readIndex; }

    void add(const znLinear::Point2Flt& point);
    /// The next sub-step. False, with `out` unchanged, when all have been read.
    bool read(znLinear::Point2Flt& out);

private:
    Smooth1D m_filterX, m_filterY;
    int m_numSteps;
    zn::vector<float> m_x, m_y;
    int m_readIndex = 0;
    int m_available = 0;
};

} // namespace internal

/// Smooths a stroke with a mass and drag along each axis. Each sample but the first gives `numSteps` points, which
/// trail it. They begin at the first sample, where the filter rests, and are to be read before the next one is added,
/// or they are lost. All in `float`, by one thread; only the constructor takes memory.
class ZNGEOM_API Smooth2D : public zn::ReferenceCount
{
public:
    /// See `Smooth1D` for mass and drag. A number of steps below 1 gives no points.
    explicit Smooth2D(float mass = 0.9f, float drag = 0.921f, int numSteps = 6);
    ~Smooth2D() override = default;

    void add_point(const znLinear::Point2Flt& point);

    /// The next point. False, with `out` unchanged, when there is none until more is added.
    bool interpolate(znLinear::Point2Flt& out);

private:
    internal::SmoothSteps m_steps;
};

} // namespace znGeom
