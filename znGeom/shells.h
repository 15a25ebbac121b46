/// Surfaces with a thickness, at a distance, and with borders sewn together or framed.
#pragma once

#include "znGeom/shells/collar.h"
#include "znGeom/shells/collar_ribbon.h"
#include "znGeom/shells/line_topology.h"
#include "znGeom/shells/mesh_stitch.h"
#include "znGeom/shells/offset.h"
#include "znGeom/shells/stitch_seam.h"
