#include "znGeom/planar/polylines/polyline.h"

#include <utility>

#include "znGeom/planar/polylines/internal/vertex_runs.h"

namespace znGeom {

using znLinear::Point;
using znLinear::Range1d;
using znLinear::Range3d;

Polyline::~Polyline() = default;

void Polyline::initialize(int count, const vertex* const vertices)
{
    if (count > 0)
        m_vertices = zn::vector<vertex>(vertices, vertices + count);
    else
        m_vertices.clear();
    modified();
}

bool Polyline::getClosed() const { return internal::comesBack(m_vertices); }

Range1d Polyline::getDomain() const
{
    return m_vertices.empty() ? Range1d() : Range1d(m_vertices.front().parameter, m_vertices.back().parameter);
}

Range3d Polyline::getBoundingBox() const { return internal::boundsOf<Range3d>(m_vertices); }

double Polyline::getLength(double from, double to) const
{
    if (to < from) std::swap(from, to);
    double length = 0;
    Point place = eval(from);
    for (const vertex* next = internal::firstBeyond(m_vertices, from); next != m_vertices.end(); ++next) {
        if (!(next->parameter < to)) break;
        length += distance(place, next->point);
        place = next->point;
    }
    return length + distance(place, eval(to));
}

Point Polyline::eval(double parameter) const { return internal::pointAt(m_vertices, parameter); }

void Polyline::modified() {}

} // namespace znGeom
