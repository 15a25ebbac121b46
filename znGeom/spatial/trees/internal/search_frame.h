/// The coordinates in which searches bound distances in `float`.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/linear/narrow.h"

namespace znGeom::internal {

/// The coordinates of a mesh minus an origin, times a power of two, so that the largest lies between 2^20 and 2^21:
/// whatever the size and position of the mesh, squares neither vanish nor overflow, and what is lost by rounding is
/// relative to the size of the mesh and not to its distance from zero.
///
/// The origin lies where subtracting it from a coordinate of the mesh is exact: halfway, where all coordinates on an
/// axis lie between two numbers of which one is at most two and a half times the other, otherwise at zero. So
/// coordinates can be recovered, except for those that are smaller than the largest by a factor of 2^146.
///
/// What rounding costs. Let u = 2^-24, M the largest coordinate of the mesh and Q that of the query, in the frame. The
/// query is narrowed (u Q per coordinate) and subtracted from a corner (u (M + Q)), which is (M + 2 Q) u per
/// coordinate.
/// - A bound from below by the plane through a place: these, 3 u relative to a corner's length by the products along
///   the way, 2.5 u relative by squares, quotient and root: 3^(1/2) (6.5 M + 7.5 Q) u, less than (12 M + 13 Q) u. The
///   bound by a box loses less.
/// - A bound from above by the place itself: the corners, 8 u (M + Q) in combining them, 2 u M since the weights may
///   add up to more than 1, and 1.5 u relative for the squares: less than (22 M + 20 Q) u.
/// - Projection and evaluation in `double`: 2^-26 (M + Q) at most, for needles, where the weights are at their worst.
/// The sum is below 36 (M + Q) u: half the margin. Because of the other half, whatever a search leaves out is farther
/// than the nearest place by that much.
struct SearchFrame
{
    /// In the frame, no margin is smaller than what follows from this, so that squares too small for `float`, and
    /// anything below 2^-50, do not matter.
    static constexpr double leastLargest = 1 << 20;
    /// A query with larger coordinates than this times the mesh's is too far for bounds in `float` to tell triangles
    /// apart.
    static constexpr double farthest = 64;
    static constexpr double margin = 72.0 / (1 << 24);

    float origin[3] = {-0.0f, -0.0f, -0.0f}; ///< a zero that leaves the sign of another zero unchanged when added
    double scale = 1, unscale = 1;
    double largest = leastLargest; ///< the largest magnitude of a coordinate of the mesh, in the frame

    SearchFrame() = default;
    /// \param box  of finite coordinates
    explicit SearchFrame(const BoundingBox& box)
    {
        const float *low = &box.minX, *high = &box.maxX;
        float size = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const float near = std::min(std::fabs(low[axis]), std::fabs(high[axis]));
            const float far = std::max(std::fabs(low[axis]), std::fabs(high[axis]));
            const bool oneSide = (low[axis] > 0) == (high[axis] > 0);
            if (oneSide && near > 0 && far <= 2.5f * near) origin[axis] = low[axis] * 0.5f + high[axis] * 0.5f;
            size = std::max({size, std::fabs(low[axis] - origin[axis]), std::fabs(high[axis] - origin[axis])});
        }
        if (!(size > 0)) return;
        const int exponent = 20 - std::ilogb(size);
        scale = std::ldexp(1.0, exponent);
        unscale = std::ldexp(1.0, -exponent);
        largest = static_cast<double>(size) * scale;
    }

    /// Of the mesh.
    float toFrame(float coordinate, int axis) const
    {
        const float seen = origin[axis] != 0 ? coordinate - origin[axis] : coordinate;
        return znLinear::narrow(static_cast<double>(seen) * scale);
    }
    double fromFrame(float coordinate, int axis) const
    {
        return static_cast<double>(coordinate) * unscale + static_cast<double>(origin[axis]);
    }
    /// Of a query.
    double toFrame(double coordinate, int axis) const
    {
        return (coordinate - static_cast<double>(origin[axis])) * scale;
    }
};

/// A query in a frame.
struct FrameQuery
{
    float at[3];
    double reach;  ///< M + Q: no corner of the mesh is farther away than this along an axis
    double loss;   ///< the margin
    bool isInside; ///< neither too far away nor not a number

    FrameQuery(const SearchFrame& frame, const znLinear::Point& point)
    {
        double size = 0;
        isInside = true;
        for (int axis = 0; axis < 3; ++axis) {
            const double coordinate = frame.toFrame(point[axis], axis);
            isInside = isInside && std::fabs(coordinate) <= SearchFrame::farthest * frame.largest;
            at[axis] = znLinear::narrow(coordinate);
            size = std::max(size, std::fabs(coordinate));
        }
        reach = frame.largest + size;
        loss = SearchFrame::margin * reach;
    }
};

} // namespace znGeom::internal
