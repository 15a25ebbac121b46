/// Marks for what the library exports, and for functions whose printf-style format the compiler checks.
#pragma once

#include "znGeom/foundation/machine/language.h"

#if defined(ZNGEOM_STATIC)
#define ZNGEOM_API
#else
#define ZNGEOM_API __attribute__((visibility("default")))
#endif

#define ZNGEOM_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
