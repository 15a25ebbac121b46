/// The five process-wide tolerances, and the one way in which they are compared.
#pragma once

#include "znGeom/foundation/machine/export.h"

namespace znLinear {

/// Lengths, areas, curve parameters and differences of unit vectors, in `double`.
extern ZNGEOM_API double epsilonTol;

/// Squared lengths: the square of what a sum of `float` unit vectors loses to cancellation.
extern ZNGEOM_API double epsilon2Tol;

/// `isParallel`: how far the cosine between two unit directions may stay below 1.
extern ZNGEOM_API double parallelTol;

/// Line and plane intersections: the squared sine (or cosine) of an angle below which they count as parallel.
extern ZNGEOM_API double perpendicular2Tol;

/// Lengths, areas and matrix elements in `float`.
extern ZNGEOM_API float epsilonTolFlt;

/// Two numbers count as equal when the tolerance is greater than their difference: a difference of exactly the
/// tolerance is a difference, and so is NaN.
template <typename T>
constexpr bool equivalent(T a, T b, T tol) requires(T(0.5) != T(0))
{
    const T difference = a < b ? b - a : a - b;
    return tol > difference;
}

} // namespace znLinear
