/// `znUtil::Transform2d`: scale and offset of texture coordinates.
#pragma once

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

struct Transform2d
{
    float scaleU = 1, scaleV = 1;
    float offsetU = 0, offsetV = 0;
    int order = 0; ///< 0 scales and then offsets, any other value offsets and then scales

    /// Transforms one pair in place.
    constexpr void apply(float& u, float& v) const
    {
        u = order == 0 ? u * scaleU + offsetU : (u + offsetU) * scaleU;
        v = order == 0 ? v * scaleV + offsetV : (v + offsetV) * scaleV;
    }
};

static_assert(sizeof(Transform2d) == 4 * sizeof(float) + sizeof(int));

} // namespace znUtil
