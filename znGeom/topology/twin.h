/// Twin surfaces: completing the connectivity of a half-edge mesh.
#pragma once

#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Pairs the half-edges without a twin that join the same two vertices.
///
/// Direction is ignored: halves that run the same way are paired as well, and the caller is responsible for
/// orientation. Where three or more half-edges join two vertices they are paired in the order of their faces and within
/// these from the first half-edge on; an odd one remains boundary. Half-edges that have twins are left alone. Calls
/// `modified` on the mesh if a pair was made. Linear in the half-edges.
ZNGEOM_API void meshTwin(TopoMesh& mesh);
/// The same for the half-edges that leave the corners of some faces: enough where a complete mesh was given new faces.
/// Linear in the half-edges there, but for a sort.
ZNGEOM_API void meshTwin(TopoMesh& mesh, const zn::vector<TopoMeshFace>& faces);

} // namespace znGeom
