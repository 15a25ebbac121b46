/// The lengths of paths over vertices: boundary loops, line strips.
#pragma once

#include <span>

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/point_mesh.h"

namespace znGeom {

/// The length of a path, in the mesh's units; added up in `double`. Not finite where a vertex isn't.
///
/// \param vertices  indices, in turn; fewer than two have no length
/// \param closed    whether the path goes on from its last vertex to its first
ZNGEOM_API double meshPathLength(const PointMesh& mesh, std::span<const int> vertices, bool closed);

/// The length of each of a list of paths. For the loops of a `MeshBoundaries`: `boundaries.sequence()`, closed.
///
/// \param lengths  replaced: one per sequence
///
/// Linear in all vertices of the list.
ZNGEOM_API void meshPathLengths(const PointMesh& mesh, const MeshSequence& paths, bool closed,
                                zn::vector<double>& lengths);

} // namespace znGeom
