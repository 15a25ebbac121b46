/// Vertices in the middle of a surface.
#pragma once

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

/// Whether the faces of a vertex make one closed fan, and none of them repeats it.
inline bool isPlainFan(TopoMeshVertex vertex)
{
    int size = 0;
    for (TopoMeshEdge spoke = vertex->edge; spoke; ++size) {
        if (endOf(spoke) == vertex) return false;
        spoke = nextAround(spoke);
        if (spoke == vertex->edge) return size + 1 == vertex.valence();
    }
    return false;
}

} // namespace znGeom::internal
