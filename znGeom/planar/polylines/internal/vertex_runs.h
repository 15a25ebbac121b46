/// What the polylines of space and of the plane do with their vertices: records with a `point` and a `parameter` that
/// grows from one to the next.
#pragma once

#include <algorithm>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/linear/tolerance.h"

namespace znGeom::internal {

/// The first vertex whose parameter is greater.
template <typename Vertex>
const Vertex* firstBeyond(const zn::vector<Vertex>& vertices, double parameter)
{
    return std::upper_bound(vertices.begin(), vertices.end(), parameter,
                            [](double value, const Vertex& vertex) { return value < vertex.parameter; });
}

/// The parameter of the place at `u` of the way from one vertex to the next.
template <typename Vertex>
double parameterAt(const Vertex& from, const Vertex& to, double u)
{
    return from.parameter + (to.parameter - from.parameter) * u;
}

/// The point at a parameter: the first or the last beyond the domain, the origin where there are no vertices.
template <typename Vertex>
auto pointAt(const zn::vector<Vertex>& vertices, double parameter)
{
    if (vertices.empty()) return decltype(Vertex::point)();
    const Vertex* const to = firstBeyond(vertices, parameter);
    if (to == vertices.begin()) return vertices.front().point;
    const Vertex& from = *(to - 1);
    if (to == vertices.end() || from.parameter == parameter) return from.point;
    const double u = (parameter - from.parameter) / (to->parameter - from.parameter);
    return combine(1 - u, from.point, u, to->point);
}

template <typename Vertex>
bool comesBack(const zn::vector<Vertex>& vertices)
{
    return vertices.size() >= 3 && equivalent(vertices.front().point, vertices.back().point, znLinear::epsilonTol);
}

/// Empty without vertices.
template <typename Range, typename Vertex>
Range boundsOf(const zn::vector<Vertex>& vertices)
{
    Range bounds;
    for (const Vertex& vertex : vertices) bounds.include(vertex.point);
    return bounds;
}

} // namespace znGeom::internal
