/// What the machine offers beside the language: hints for its caches and its pages.
#pragma once

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/machine/huge_pages.h"
#include "znGeom/foundation/machine/prefetch.h"
