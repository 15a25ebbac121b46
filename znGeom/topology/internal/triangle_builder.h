/// A half-edge mesh of many triangles at once.
#pragma once

#include "znGeom/foundation/mesh/mesh_records.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// Fills an empty half-edge mesh: to the last link the mesh that `allocVertex` for each position, `allocTriangle` for
/// each triangle, and `meshTwin` make, with the line that this writes. No listener is notified.
///
/// \param members       the places of the vertices in `positions`, in the order in which they are made
/// \param triangles     their corners: places in `members`
///
/// Linear. All pairs are found on flat arrays, and each record is written once.
void buildTriangles(TopoMesh& mesh, const MeshVertex* positions, const zn::vector<int>& members,
                    const MeshTriangle* triangles, int numTriangles);

} // namespace znGeom::internal
