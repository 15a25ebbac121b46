/// Strokes spaced and smoothed, and curves through samples.
#pragma once

#include "znGeom/planar/strokes/flt_interpolate_2d.h"
#include "znGeom/planar/strokes/interpolate_2d.h"
#include "znGeom/planar/strokes/interpolate_alg.h"
#include "znGeom/planar/strokes/smooth_1d.h"
#include "znGeom/planar/strokes/smooth_2d.h"
#include "znGeom/planar/strokes/smooth_interpolate_2d.h"
