/// Polylines: what they are near to, what they run along, fewer vertices, segments joined to them.
#pragma once

#include "znGeom/planar/polylines/decimate.h"
#include "znGeom/planar/polylines/merge_segments.h"
#include "znGeom/planar/polylines/overlap.h"
#include "znGeom/planar/polylines/polyline.h"
#include "znGeom/planar/polylines/polyline_2d.h"
#include "znGeom/planar/polylines/polyline_bbox_cache.h"
#include "znGeom/planar/polylines/polyline_intersect.h"
#include "znGeom/planar/polylines/polyline_project.h"
#include "znGeom/planar/polylines/polyline_transform.h"
#include "znGeom/planar/polylines/segment.h"
