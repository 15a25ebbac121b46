/// What the library needs from the compiler and the machine, and which version of the library this is.
#pragma once

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/machine/huge_pages.h"
#include "znGeom/foundation/machine/language.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/machine/stream.h"
#include "znGeom/foundation/machine/version.h"
