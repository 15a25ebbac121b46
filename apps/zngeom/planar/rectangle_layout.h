/// Rectangles laid out in the unit square, as large as they find room.
#pragma once

#include <string>
#include <vector>

#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct RectangleLayout
{
    std::vector<znLinear::Range2d> places; ///< in the unit square
    double scale = 1;                      ///< of the sizes
    int tries = 0;
    double density = 0; ///< the area of the places
};

/// Lays rectangles out, all in the same scale, and fails where a margin leaves no room for them.
///
/// \param sizes       finite, none below 0
/// \param iterations  of `znGeom::pack`
/// \param margin      how much is left free between two places at least, and half of it along the border of the square:
///                    a part of the side of the square
RectangleLayout layOut(const std::vector<znLinear::Point2>& sizes, int iterations, double margin,
                       znUtil::Progress& progress);

} // namespace tool
