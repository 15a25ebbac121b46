/// Flattening surfaces: cutting them open, coordinates of the plane for their vertices, and what these distort.
#pragma once

#include "znGeom/parameterize/cut_surface.h"
#include "znGeom/parameterize/reparameterize_mesh.h"
#include "znGeom/parameterize/uv_distortion.h"
