/// Closing and thickening surfaces.
#pragma once

#include "znGeom/shells/line_topology.h"
#include "znGeom/shells/mesh_stitch.h"
#include "znGeom/shells/stitch_seam.h"
