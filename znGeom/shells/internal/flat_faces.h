/// Triangles without area in a half-edge mesh.
#pragma once

#include <functional>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// Which triangles have no area to speak of, by face numbers.
zn::vector<bool> flatFaces(const TopoMesh& mesh);

/// Swaps the longest sides of such triangles, so that both get a share of the neighbour's area; where that doesn't help,
/// contracts a side that is next to nothing beside the others.
/// \param wereFlat  those to be left as they are, by the numbers of an earlier `flatFaces`; later faces are not there
/// \param goes      is given each vertex before it goes
void mendFlatFaces(TopoMesh& mesh, const zn::vector<bool>& wereFlat, const std::function<void(TopoMeshVertex)>& goes);

} // namespace znGeom::internal
