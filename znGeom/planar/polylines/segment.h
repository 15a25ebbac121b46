/// `znGeom::Segment`: a line segment in the precision of meshes.
#pragma once

#include "znGeom/foundation/linear/narrow.h"
#include "znGeom/foundation/machine/language.h"

namespace znGeom {

/// Two points in space.
struct Segment
{
    float start[3], end[3]; ///< x, y, z

    /// Leaves the numbers as they are.
    Segment() {}
    Segment(const float* from, const float* to) { set(from, to); }
    /// Narrowed to the nearest `float`.
    Segment(const double* from, const double* to) { set(from, to); }

private:
    template <typename T>
    void set(const T* from, const T* to)
    {
        for (int axis = 0; axis < 3; ++axis) {
            start[axis] = znLinear::inPrecision<float>(from[axis]);
            end[axis] = znLinear::inPrecision<float>(to[axis]);
        }
    }
};

static_assert(sizeof(Segment) == 6 * sizeof(float));

} // namespace znGeom
