/// Geometry of the plane: fits, polygons and packing.
#pragma once

#include "znGeom/planar/pack.h"
#include "znGeom/planar/plane_fit.h"
#include "znGeom/planar/polygon.h"
#include "znGeom/planar/triangulate_polygon.h"
