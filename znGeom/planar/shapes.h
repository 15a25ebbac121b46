/// Points and outlines in the plane: fits, polygons, hulls and smallest rectangles, packing.
#pragma once

#include "znGeom/planar/shapes/convex_hull.h"
#include "znGeom/planar/shapes/min_area_bound.h"
#include "znGeom/planar/shapes/pack.h"
#include "znGeom/planar/shapes/plane_fit.h"
#include "znGeom/planar/shapes/polygon.h"
#include "znGeom/planar/shapes/triangulate_polygon.h"
