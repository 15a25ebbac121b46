/// `znGeom::Polyline2d`: a curve through points of the plane, with straight pieces.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// The vertices of a line of the plane in order, each with a parameter that grows from one to the next, as those of a
/// `Polyline` do. A value: copies are deep.
class ZNGEOM_API Polyline2d
{
public:
    struct vertex2d
    {
        znLinear::Point2 point;
        double parameter = 0;
    };

    /// Without vertices.
    Polyline2d() = default;
    /// \param parameters  one for each point; points beyond the last one go on as `appendVertex` does
    Polyline2d(const zn::vector<znLinear::Point2>& points, const zn::vector<double>& parameters);

    /// Its parameter is 0, or that of the vertex before plus 1.
    void appendVertex(const znLinear::Point2& point);

    int getNumVertices() const { return m_vertices.size(); }
    const vertex2d& getVertex(int i) const { return m_vertices[i]; }
    vertex2d& getVertex(int i) { return m_vertices[i]; }
    const vertex2d& getFirstVertex() const { return m_vertices.front(); }

    /// Whether it comes back to where it began: three vertices or more, the first and the last less than `epsilonTol`
    /// apart in each coordinate.
    bool getClosed() const;

    /// Empty without vertices. Linear.
    znLinear::Range2d getBoundingBox() const;

    /// The point at a parameter: the first or the last vertex beyond the domain, the origin without vertices.
    /// Logarithmic.
    znLinear::Point2 eval(double parameter) const;

    void swap(Polyline2d& other) noexcept { m_vertices.swap(other.m_vertices); }

private:
    zn::vector<vertex2d> m_vertices;
};

} // namespace znGeom
