/// The plane from which a flattening starts.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/output/app_output.h"

namespace znGeom::internal {

/// The two vertices that keep their places.
struct ChartPins
{
    int low = 0, high = 0;
};

/// Picks the loop that reaches farthest along one axis, and its first vertices at both ends there.
///
/// \param loops  the vertices of each border
/// \return the number of the loop, of equals the lowest; -1 where none has any extent
int findOuterLoop(const CompactMesh& mesh, const zn::vector<zn::vector<int>>& loops, ChartPins& pins);

/// Turns the plane of a loop into that of x and y, tilted as little as needed for the chord between the pins to lie in
/// it. Says in `output` how the plane was found.
znLinear::AffineMatrix chartRotation(const CompactMesh& mesh, const zn::vector<int>& loop, const ChartPins& pins,
                                     znOS::AppOutput& output);

/// The power of two that brings the distance of the pins to [2^24, 2^25). Multiplied by it, coordinates are so large
/// that the tolerances of areas and of the solver, which are absolute, catch nothing but what is 0 or as good as 0, and
/// the same in every unit.
double chartScale(const CompactMesh& mesh, const ChartPins& pins);

} // namespace znGeom::internal
