/// Which znGeom this is: the one compiled with, and the one linked.
#pragma once

#include "znGeom/foundation/machine/export.h"

#define ZNGEOM_VERSION_MAJOR 0
#define ZNGEOM_VERSION_MINOR 1
#define ZNGEOM_VERSION_PATCH 0
/// The three as a string.
#define ZNGEOM_VERSION "0.1.0"

namespace zngeom {

/// The version of the library that the program runs with, in the form of ZNGEOM_VERSION. Never null.
ZNGEOM_API const char* version();

} // namespace zngeom
