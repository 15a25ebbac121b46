/// On which side of a line a point lies, without rounding.
#pragma once

#include <cmath>

#include "znGeom/foundation/linear/point.h"

namespace znGeom::internal {

/// The sign of the same determinant where plain arithmetic does not tell it.
int exactOrientation(const znLinear::Point2& p, const znLinear::Point2& a, const znLinear::Point2& b);

/// 1 when p, a, b turn to the left, -1 when they turn to the right, 0 when they lie on a line: the sign of the exact
/// determinant of a - p and b - p, for any finite coordinates. So it is antisymmetric to the bit in each two of its
/// points, and a sort around p by it is one by a true order.
///
/// The determinant as computed decides when it exceeds its own error, by the bound of Shewchuk, "Adaptive Precision
/// Floating-Point Arithmetic and Fast Robust Geometric Predicates" (1997).
inline int orientation(const znLinear::Point2& p, const znLinear::Point2& a, const znLinear::Point2& b)
{
    // Of the sum of the products' magnitudes; the constant is what products lose that are too small for a double.
    constexpr double relativeError = (3 + 16 * 0x1p-53) * 0x1p-53, smallestError = 0x1p-1072;
    const double left = (a.x - p.x) * (b.y - p.y), right = (a.y - p.y) * (b.x - p.x);
    const double determinant = left - right;
    const double error = relativeError * (std::fabs(left) + std::fabs(right)) + smallestError;
    if (determinant > error) return 1;
    if (-determinant > error) return -1;
    return exactOrientation(p, a, b);
}

} // namespace znGeom::internal
