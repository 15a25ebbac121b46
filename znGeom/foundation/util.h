/// Small value types: arcs of indices on a cycle, flags, texture transforms, colours.
#pragma once

#include "znGeom/foundation/util/bit_field32.h"
#include "znGeom/foundation/util/circular_range.h"
#include "znGeom/foundation/util/color.h"
#include "znGeom/foundation/util/transform2d.h"
