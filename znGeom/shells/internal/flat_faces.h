/// Triangles without area in a half-edge mesh.
#pragma once

#include <functional>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// The heights of the triangles over their longest sides, as shares of these, by face numbers.
zn::vector<double> faceHeights(const TopoMesh& mesh);

/// Swaps the longest sides of triangles that have lost next to all of their area, so that both at the side get a share
/// of the neighbour's; where that doesn't help, contracts a side that is next to nothing beside the others.
/// \param heights  of an earlier `faceHeights`: triangles that are as they were then stay. Later faces are not there
/// \param goes     is given each vertex before it goes
void mendFlatFaces(TopoMesh& mesh, const zn::vector<double>& heights, const std::function<void(TopoMeshVertex)>& goes);

} // namespace znGeom::internal
