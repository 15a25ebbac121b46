/// Sums of squared distances from planes.
#pragma once

#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/linear/proj_matrix.h"

namespace znGeom::internal {

/// A quadratic function of places: the sum, over planes, of the squared distance from each. As a matrix it is
/// symmetric; these are its entries on and above the diagonal.
struct Quadric
{
    double xx = 0, xy = 0, xz = 0, xw = 0, yy = 0, yz = 0, yw = 0, zz = 0, zw = 0, ww = 0;

    /// Adds the plane of the places p with dot(normal, p) = offset, weighted by the square of the normal's length.
    void addPlane(const znLinear::Vector& normal, double offset);
    void add(const Quadric& other);
    double at(const znLinear::Point& p) const;
    znLinear::ProjMatrix asMatrix() const;
};

/// Where a vertex goes that replaces the two ends of an edge: the place of least error, where that is a single one;
/// otherwise the middle, or one of the ends.
///
/// Whether it is a single one is decided in proportion to the largest entry, so that the mesh's unit does not matter.
znLinear::Point placementOf(const Quadric& sum, const znLinear::Point& origin, const znLinear::Point& end);

} // namespace znGeom::internal
