/// `znGeom::Sphere`.
#pragma once

#include "znGeom/foundation/linear/point.h"

namespace znGeom {

struct Sphere
{
    znLinear::Point center;
    double radius = 0;
};

} // namespace znGeom
