/// Geometry of the plane: fits and polygons.
#pragma once

#include "znGeom/planar/plane_fit.h"
#include "znGeom/planar/polygon.h"
#include "znGeom/planar/triangulate_polygon.h"
