/// What is measured of crossing triangles, and the crossings that both sides must find.
#pragma once

#include "bench/inputs.h"

#include <utility>
#include <vector>

namespace bench {

/// Pairs of triangles, the higher number first within one mesh; in order.
using Crossings = std::vector<std::pair<int, int>>;

/// Two copies of the surface in one mesh, the second moved and turned a little.
Soup overlapping(const Soup& soup);
/// The second of these alone.
Soup moved(const Soup& soup);

/// The crossings within a mesh, as the library finds them.
Crossings crossingsWithin(const Soup& soup);

} // namespace bench
