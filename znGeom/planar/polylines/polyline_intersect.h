/// `znGeom::PolylineIntersectPt`: where lines and planes meet a polyline.
#pragma once

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/linear/proj_matrix.h"
#include "znGeom/planar/polylines/polyline.h"

namespace znGeom {

/// Questions to one polyline, which has to outlive the object. Each call looks at all segments. What is given back is
/// unchanged when the answer is false; it is for fewer than two vertices.
class ZNGEOM_API PolylineIntersectPt
{
public:
    PolylineIntersectPt() = default;
    PolylineIntersectPt(const Polyline& line) : m_line(&line) {}

    void initialize(const Polyline& line) { m_line = &line; }

    /// The place where a line comes nearest to the polyline: it need not touch it. Among places whose squared distances
    /// from the line differ by less than `epsilonTol`, the one nearest the line's own point.
    ///
    /// \param s  the parameter on `line` beside the place
    /// \param t  the parameter of the place on the polyline
    bool intersect(const znLinear::ParamLine& line, double& s, double& t);
    /// \param inFront  leaves out places beside a parameter of the line of 0 or less
    bool intersect(const znLinear::ParamLine& line, bool inFront, double& s, double& t);
    /// Leaves out places beside points of the line that are not in view.
    bool intersect(const znLinear::ParamLine& line, const znLinear::ProjMatrix& view, double& s, double& t);

    /// Where the polyline passes a plane. Segments along the plane are left out: `perpendicular2Tol` is greater than
    /// the squared sine of their angle with it.
    ///
    /// \param t, point   the place; of several the one nearest to `reference`
    /// \param reference  may be null: then the plane's own point stands for it
    bool intersect(const znLinear::Plane& plane, double& t, znLinear::Point& point, const znLinear::Line* reference);

private:
    /// Whether a place of the line, given by its parameter and as a point, is wanted.
    using Test = bool (PolylineIntersectPt::*)(double s, const znLinear::Point& place) const;
    bool nearest(const znLinear::ParamLine& line, Test test, double& s, double& t) const;
    bool inFrontTest(double s, const znLinear::Point&) const;
    bool inViewTest(double, const znLinear::Point& place) const;

    const Polyline* m_line = nullptr;
    znLinear::ProjMatrix m_view;
};

} // namespace znGeom
