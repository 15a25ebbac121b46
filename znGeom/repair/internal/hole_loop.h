/// The rim of a hole made ready for being closed.
#pragma once

#include "znGeom/repair/hole_fill.h"
#include "znGeom/scopes/modify_rep.h"

namespace znGeom::internal {

/// Takes spikes off a rim, and with them their vertices from the loop, and looks whether the rest can be closed.
/// \param loop  vertices of the mesh of the scope, in order
HoleOutcome prepareLoop(MeshModifyRep& scope, TopoMesh& mesh, zn::vector<int>& loop);

} // namespace znGeom::internal
