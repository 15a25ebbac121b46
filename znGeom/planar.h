/// Geometry of the plane: fits, hulls, smallest rectangles, polygons and polylines.
#pragma once

#include "znGeom/planar/convex_hull.h"
#include "znGeom/planar/min_area_bound.h"
#include "znGeom/planar/plane_fit.h"
#include "znGeom/planar/polygon.h"
#include "znGeom/planar/polyline.h"
#include "znGeom/planar/polyline_2d.h"
#include "znGeom/planar/segment.h"
#include "znGeom/planar/triangulate_polygon.h"
