/// The way along a border between two places.
#pragma once

#include "znGeom/shells/internal/collar_region.h"

namespace znGeom::internal {

/// A place on a border: at a vertex, or between two.
struct BorderPlace
{
    TopoMeshVertex vertex; ///< null between two
    TopoMeshEdge in, out;  ///< the border half-edges that arrive here and leave; between two vertices both are the one
    double originWeight;   ///< between two vertices: that of the half-edge's origin
    znLinear::Point position;
};

struct BorderPath
{
    zn::vector<BorderPlace> places; ///< none, or two and more
    bool forward = true;
    bool endsAtLast = true; ///< the last place is the end of the way, not one on it

    /// The half-edge on which the way goes on from a place, or on which it came to it.
    TopoMeshEdge legFrom(const BorderPlace& place) const { return forward ? place.out : place.in; }
    TopoMeshEdge legTo(const BorderPlace& place) const { return forward ? place.in : place.out; }
    double length() const;
};

/// \param a, b  on the border edges between seeds of the region; from other places there is no way
BorderPath findBorderPath(const CollarRegion& region, const TopoMeshPoint& a, const TopoMeshPoint& b, bool forward);

/// Divides the way into equal steps and replaces its places by their beginnings. A path without length, and a count
/// below 1, leave it as it is.
void divideEvenly(BorderPath& path, int count);

} // namespace znGeom::internal
