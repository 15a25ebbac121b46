/// Closing and thickening surfaces.
#pragma once

#include "znGeom/shells/offset.h"
