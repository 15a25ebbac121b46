/// Triangles made ready for being crossed with others.
#pragma once

#include "znGeom/foundation/linear/plane.h"

namespace znGeom::internal {

/// A triangle with its normal, and with the rounding of what is computed from both.
struct PlacedTriangle
{
    znLinear::Point corners[3];
    znLinear::Normal normal; ///< invalid where there is no area
    double loss;             ///< what a distance from the plane loses, in relation to that from the first corner

    PlacedTriangle() = default;
    PlacedTriangle(const znLinear::Point& a, const znLinear::Point& b, const znLinear::Point& c);
};

/// Whether all corners of one triangle lie clearly on one side of the other's plane: `crosses` would say no. Costs a
/// fraction of placing them.
bool liesAside(const znLinear::Point (&triangle)[3], const znLinear::Point (&other)[3]);

/// The crossing of two triangles, as `intersect` finds it.
bool crosses(const PlacedTriangle& a, const PlacedTriangle& b, znLinear::Point& p, znLinear::Point& q);

} // namespace znGeom::internal
