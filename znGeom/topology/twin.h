/// Twin surfaces: completing the connectivity of a half-edge mesh.
#pragma once

#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Pairs the half-edges without a twin that join the same two vertices.
///
/// Direction is not looked at: halves that run the same way are paired as well, and the caller answers for orientation.
/// Where three or more half-edges join two vertices they are paired in the order of their faces and within these from
/// the first half-edge on; an odd one stays boundary. Half-edges that have twins are left alone. Tells the mesh when a
/// pair was made. Linear in the half-edges.
ZNGEOM_API void meshTwin(TopoMesh& mesh);

} // namespace znGeom
