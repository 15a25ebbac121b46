/// Which faces of a half-edge mesh to reverse.
#pragma once

#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Makes neighbouring faces agree on their sides: finds a set of faces that, once reversed, leaves no pair of twins
/// that run the same way. The mesh itself can't be reversed; `meshConvertPolygons` takes the result.
///
/// What is connected across edges and agrees already stays. Of anything else the first face stays; if it is closed
/// then and faces inward, by the sign of its volume, the other faces are reversed instead.
///
/// \param reversed  becomes one value for each face, by its number
/// \return false where a surface has only one side, as a Moebius band has: some twins still run the same way
///
/// Linear; runs on the calling thread.
ZNGEOM_API bool meshOrientFaces(const TopoMesh& mesh, zn::vector<bool>& reversed);

} // namespace znGeom
