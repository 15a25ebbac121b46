/// The exact distances of some triangles from a point.
#pragma once

#include <vector>

#include "znGeom/spatial/queries/internal/nearest_candidates.h"

namespace znGeom::internal {

/// The nearest place of a triangle, as `MeshCoord::project` and `evaluate` give it.
struct MeasuredTriangle
{
    double distance2;
    double weights[3];
    int place; ///< as in the candidate
};

/// Measures all candidates, bit for bit as `MeshCoord::project`, `evaluate` and `distance2` do. A triangle that has no
/// place is not among the results.
/// \param results  replaced; allocates no memory once it has grown to the size
/// \return how many there are
int measureCandidates(const PackedTriangles& tree, const NearestCandidates& candidates, const znLinear::Point& query,
                      std::vector<MeasuredTriangle>& results);

} // namespace znGeom::internal
