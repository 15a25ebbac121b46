/// Geometry of the plane: fits, polygons and polylines.
#pragma once

#include "znGeom/planar/decimate.h"
#include "znGeom/planar/merge_segments.h"
#include "znGeom/planar/overlap.h"
#include "znGeom/planar/plane_fit.h"
#include "znGeom/planar/polygon.h"
#include "znGeom/planar/polyline.h"
#include "znGeom/planar/polyline_2d.h"
#include "znGeom/planar/polyline_bbox_cache.h"
#include "znGeom/planar/polyline_intersect.h"
#include "znGeom/planar/polyline_project.h"
#include "znGeom/planar/polyline_transform.h"
#include "znGeom/planar/segment.h"
#include "znGeom/planar/triangulate_polygon.h"
