/// The distances of all vertices of a mesh from another by one library or another.
#pragma once

#include "bench/suite.h"

namespace bench {

/// The vertices of a mesh as it is when it has been scaled by 1.01 and moved by a hundredth of its diagonal, in the
/// order of the mesh.
std::vector<float> movedVertices(const Soup& soup);

/// Whether the largest of some distances from a mesh, and a few of them, are right.
bool deviationAgrees(const Input& input, const std::vector<float>& distances);

} // namespace bench
