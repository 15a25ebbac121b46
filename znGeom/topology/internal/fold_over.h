/// When two triangles on an edge fold over.
#pragma once

#include <numbers>

#include "znGeom/foundation/linear/plane.h"
#include "znGeom/topology/topo_handles.h"

namespace znGeom::internal {

/// Invalid where the corners span no area.
inline znLinear::Normal normalOf(TopoMeshVertex p, TopoMeshVertex q, TopoMeshVertex r)
{
    return znLinear::Normal(cross(r->point - q->point, p->point - q->point));
}

/// Whether the triangles (c, d, b) and (a, d, c), of an edge from c to d, lie at more than a right angle, or one of
/// them has no normal.
inline bool foldsOver(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d)
{
    const znLinear::Normal first = normalOf(c, d, b), second = normalOf(a, d, c);
    return !first.isValid() || !second.isValid() || angle(first, second) > std::numbers::pi / 2;
}

} // namespace znGeom::internal
