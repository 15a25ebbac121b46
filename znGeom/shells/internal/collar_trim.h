/// The part of a curve between two places near it.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/topology/topo_point.h"

namespace znGeom::internal {

/// The places from the earlier to the later of the two, and these, where they don't coincide with one of the curve's
/// own; none where the two are the same place, or the curve has less than two.
zn::vector<TopoMeshPoint> trimCurve(zn::vector<TopoMeshPoint> places, const TopoMeshPoint& a, const TopoMeshPoint& b);

} // namespace znGeom::internal
