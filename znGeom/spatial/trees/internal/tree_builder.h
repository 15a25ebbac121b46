/// How octrees and quadtrees are built.
#pragma once

#include "znGeom/spatial/trees/point_tree.h"

namespace znGeom::internal {

/// Builds a tree over points of three floats each by the rules that `Octree` states.
///
/// The first levels are found at once: each axis of a cell path depends on that axis alone, so a point's cell there
/// takes a few comparisons, and one counting sort puts the points in order. Cells that are then still too full are
/// split further, each on its own, by whichever thread is free. The tree is the same for any number of threads.
template <int Axes>
PointTree buildPointTree(int numPoints, const float* points, const BoundingBox& box, int leafCapacity, bool parallel);

extern template PointTree buildPointTree<2>(int, const float*, const BoundingBox&, int, bool);
extern template PointTree buildPointTree<3>(int, const float*, const BoundingBox&, int, bool);

} // namespace znGeom::internal
