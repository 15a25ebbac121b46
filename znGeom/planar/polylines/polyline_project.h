/// `znGeom::PolylineProjectPt`: the place of a polyline that is nearest to a point.
#pragma once

#include "znGeom/planar/polylines/polyline.h"

namespace znGeom {

/// Questions to one polyline, which has to outlive the object. Each call looks at all segments.
class ZNGEOM_API PolylineProjectPt
{
public:
    PolylineProjectPt() = default;
    PolylineProjectPt(const Polyline& line) : m_line(&line) {}

    void initialize(const Polyline& line) { m_line = &line; }

    /// The nearest place; of several the one in the earliest segment.
    ///
    /// \param closest   unchanged where there is none: with fewer than two vertices
    /// \param distance  to it; the square root of 1e300 where there is none
    /// \return its parameter, or -1 where there is none
    double project(const znLinear::Point& p, znLinear::Point& closest, double& distance) const;
    double project(const znLinear::Point& p, znLinear::Point& closest) const;
    double project(const znLinear::Point& p) const;

    /// Where a polyline is closed, both ends of its domain are one place. When exactly one of two parameters is an end
    /// of the domain, it becomes the end that is nearer to the other one, the last where both are equally near.
    /// \return whether that was the case; false for an open line
    bool adjust(double& t1, double& t2) const;

private:
    const Polyline* m_line = nullptr;
};

} // namespace znGeom
