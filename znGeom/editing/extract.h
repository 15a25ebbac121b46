/// Copying a part of a mesh into a mesh of its own.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// Copies a subset of a mesh: its vertices with all their channels, and its triangles.
///
/// \param target  another mesh: gets the subset's vertices and triangles in the order of its lists, and each channel
///                and named attribute that the source has. Channels that only the target had are dropped; its other
///                named attributes, lines and selections stay as they are. One `TopologyChanged` is reported
/// \param subset  its vertices must cover its triangles: a corner that is not among them becomes -1
///
/// Linear; runs on the calling thread.
ZNGEOM_API void meshExtract(CompactMesh& target, const CompactMesh& source, const MeshSubset& subset);

/// The same for what is selected on the source, in ascending order.
ZNGEOM_API void meshExtract(CompactMesh& target, const CompactMesh& source);

/// Divides a mesh into parts of about equal size, as `MeshPartition` does, and copies each into a mesh of its own.
///
/// \param parts   how many; there are fewer where the mesh has fewer triangles
/// \param result  the parts are appended; the caller owns them and deletes them
///
/// Vertices that no triangle uses are in no part. Linear; runs on the calling thread.
ZNGEOM_API void meshSplit(const CompactMesh& mesh, int parts, zn::vector<CompactMesh*>& result);

} // namespace znGeom
