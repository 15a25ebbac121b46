/// `znGeom::Polyline`: a curve through points in space, with straight pieces.
#pragma once

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/linear/range.h"

namespace znGeom {

/// The vertices of a line in order, each with a parameter; what runs along the line (colour, pressure, time, or just
/// the number of the vertex) is told by the parameter. It grows from each vertex to the next and is linear between
/// them. Nothing derived is kept: const calls may be made from any number of threads.
class ZNGEOM_API Polyline : public zn::ReferenceCount
{
public:
    struct vertex
    {
        znLinear::Point point;
        double parameter = 0;
    };

    /// Without vertices.
    Polyline() = default;
    /// Copies `count` vertices; none where it is not above 0.
    Polyline(int count, const vertex* const vertices) { initialize(count, vertices); }
    virtual ~Polyline();

    /// Replaces all vertices by a copy of these, which may be some of its own.
    void initialize(int count, const vertex* const vertices);

    int getNumVertices() const { return m_vertices.size(); }
    const vertex& getVertex(int i) const { return m_vertices[i]; }
    /// For changes; `modified` is to be called when they are done.
    vertex& getVertex(int i) { return m_vertices[i]; }

    /// Whether it comes back to where it began: three vertices or more, the first and the last less than `epsilonTol`
    /// apart in each coordinate.
    bool getClosed() const;

    /// The parameters of the first and the last vertex; empty without vertices.
    znLinear::Range1d getDomain() const;

    /// Empty without vertices. Linear.
    znLinear::Range3d getBoundingBox() const;

    /// The length of the way between two parameters, which may come in either order; what lies beyond the domain has no
    /// length. Linear in the vertices between them.
    double getLength(double from, double to) const;

    /// The point at a parameter: the first or the last vertex beyond the domain, the origin without vertices.
    /// Logarithmic.
    znLinear::Point eval(double parameter) const;

    /// To be called when vertices were changed in place. A class that stores something derived overrides it, to drop
    /// that; here nothing is stored.
    virtual void modified();

private:
    zn::vector<vertex> m_vertices;
};

} // namespace znGeom
