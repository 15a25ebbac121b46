/// What the library needs of compiler and machine, and which library it is.
#pragma once

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/machine/huge_pages.h"
#include "znGeom/foundation/machine/language.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/machine/version.h"
