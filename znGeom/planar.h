/// Geometry of the plane: shapes, polylines, strokes.
#pragma once

#include "znGeom/planar/polylines.h"
#include "znGeom/planar/shapes.h"
#include "znGeom/planar/strokes.h"
