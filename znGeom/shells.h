/// Closing and thickening surfaces.
#pragma once

#include "znGeom/shells/stitch_seam.h"
