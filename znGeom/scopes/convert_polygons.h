/// Whole meshes of polygons, as half-edge meshes and as flat ones.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// The polygons of a flat mesh, or its triangles where it has no polygons, as a half-edge mesh: vertices and faces in
/// their order, positions widened to `double`, and twins completed by `meshTwin`.
///
/// \param result  gains these elements
///
/// Faces of fewer than three corners are left out; indices are trusted. Linear.
ZNGEOM_API void meshConvertPolygons(const CompactMesh& mesh, TopoMesh& result);

/// The other way: vertices and faces in the order of the lists, positions narrowed to `float`.
///
/// \param result    loses everything that it has. If all faces are triangles they become its triangles; otherwise all
///                  become its polygons, and their fans round the first corner its triangles, as `meshLoad` has it.
///                  No listener is notified
/// \param reversed  which faces to take backwards, by their numbers; the first corner stays the first. Empty for none
///
/// Linear.
ZNGEOM_API void meshConvertPolygons(const TopoMesh& mesh, CompactMesh& result, const zn::vector<bool>& reversed = {});

} // namespace znGeom
