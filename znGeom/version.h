/// The version of the library.
#pragma once

#include "znGeom/foundation/machine/version.h"
