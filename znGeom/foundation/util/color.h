/// `znUtil::Color`: red, green, blue and alpha, 0 to 1.
#pragma once

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

struct Color
{
    float red = 0, green = 0, blue = 0, alpha = 1;
};

} // namespace znUtil
