/// The connected components of a mesh.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Counts the connected components of a mesh. Triangles are connected where they share a vertex: two cones that touch
/// at their tips are one component.
///
/// \param adjTris           built from this mesh by `meshAdjTris`
/// \param vertexComponents  may be null; resized to the number of vertices: the component of each, numbered from 0 in
///                          the order of their lowest triangles, -1 for a vertex that no triangle uses
/// \return the number of components
///
/// Union-find over the vertices (Tarjan 1975; halved paths: van der Weide 1980): practically linear. Runs on the
/// calling thread.
ZNGEOM_API int meshComponents(const CompactMesh& mesh, const MeshAdjTris& adjTris, Array<int>* vertexComponents);

/// Counts the components of a half-edge mesh. Faces are connected only across edges, so that parts that merely touch at
/// a vertex are separate here; vertices without faces are not counted. Linear in the half-edges.
ZNGEOM_API int meshComponents(TopoMesh& mesh);

} // namespace znGeom
