/// What the operations on half-edge meshes share.
#pragma once

#include "znGeom/topology/topo_handles.h"

namespace znGeom::internal {

inline void link(TopoMeshEdge before, TopoMeshEdge after)
{
    before->next = after;
    after->prev = before;
}

inline bool isTriangle(TopoMeshEdge side) { return side->next->next->next == side; }

} // namespace znGeom::internal
