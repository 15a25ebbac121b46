/// The search for the triangle that a ray hits using a tree.
#pragma once

#include "znGeom/spatial/queries/internal/ray_hit.h"
#include "znGeom/spatial/trees/internal/packed_triangles.h"

namespace znGeom::internal {

/// Tests all triangles of a tree that a ray may hit before the nearest hit so far, or up to the first hit where that is
/// the question.
/// \param tree  with triangles, and exact
/// \return false, with nothing tested, for a ray from so far away that boxes in `float` don't tell triangles apart
bool searchAlongRay(const PackedTriangles& tree, const RayQuestion& question, NearestHit& hit);

} // namespace znGeom::internal
