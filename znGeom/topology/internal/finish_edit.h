/// The end of an edit that made new faces.
#pragma once

#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// Pairs what `meshTwin` of these faces pairs, without a word to anyone. \return whether there was a pair
bool pairOpenEdges(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces);

/// As `meshTwin` of these faces, but the listeners are notified whether or not there was a pair left to make.
void finishEdit(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces);

} // namespace znGeom::internal
