/// Geometry of the plane: fits, polygons, polylines, hulls and smallest rectangles, packing, strokes and curves through
/// samples.
#pragma once

#include "znGeom/planar/convex_hull.h"
#include "znGeom/planar/flt_interpolate_2d.h"
#include "znGeom/planar/interpolate_2d.h"
#include "znGeom/planar/interpolate_alg.h"
#include "znGeom/planar/min_area_bound.h"
#include "znGeom/planar/pack.h"
#include "znGeom/planar/plane_fit.h"
#include "znGeom/planar/polygon.h"
#include "znGeom/planar/polyline.h"
#include "znGeom/planar/polyline_2d.h"
#include "znGeom/planar/segment.h"
#include "znGeom/planar/smooth_1d.h"
#include "znGeom/planar/smooth_2d.h"
#include "znGeom/planar/smooth_interpolate_2d.h"
#include "znGeom/planar/triangulate_polygon.h"
