/// Capsules round the stretches of a polyline.
#pragma once

#include "znGeom/foundation/linear/point.h"
#include "znGeom/planar/polylines/internal/stretch_tree.h"
#include "znGeom/planar/polylines/polyline.h"

namespace znGeom::internal {

/// All places within `radius` of a segment.
struct Capsule
{
    znLinear::Vector from, to;
    double radius = 0;
};

constexpr int verticesPerCapsule = 32;

/// Capsules round all whole blocks of `verticesPerCapsule` vertices and what they make up. They stand in coordinates
/// about the first vertex, so that they are as exact far from the origin as near it: a vertex is within a capsule to
/// some 1e-15 of the extent of the line. Linear.
StretchTree<Capsule> capsuleTree(const Polyline::vertex* vertices, int count);

} // namespace znGeom::internal
