/// When two triangles on an edge fold over.
#pragma once

#include <numbers>

#include "znGeom/foundation/linear/plane.h"
#include "znGeom/topology/topo_handles.h"

namespace znGeom::internal {

inline znLinear::Vector crossOf(TopoMeshVertex p, TopoMeshVertex q, TopoMeshVertex r)
{
    return cross(r->point - q->point, p->point - q->point);
}

/// Invalid where the corners span no area.
inline znLinear::Normal normalOf(TopoMeshVertex p, TopoMeshVertex q, TopoMeshVertex r)
{
    return znLinear::Normal(crossOf(p, q, r));
}

/// Whether the triangles (c, d, b) and (a, d, c), of an edge from c to d, lie at more than a right angle, or one of
/// them has no normal. Where the cosine is clear, nothing else is computed.
inline bool foldsOver(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d)
{
    constexpr double clearCosine2 = 1e-18, smallest = 1e-280, largest = 1e280;
    const znLinear::Vector first = crossOf(c, d, b), second = crossOf(a, d, c);
    const double cosine = dot(first, second), scale = first.length2() * second.length2();
    if (cosine * cosine > clearCosine2 * scale && scale > smallest && scale < largest) return cosine < 0;
    const znLinear::Normal n1(first), n2(second);
    return !n1.isValid() || !n2.isValid() || angle(n1, n2) > std::numbers::pi / 2;
}

} // namespace znGeom::internal
