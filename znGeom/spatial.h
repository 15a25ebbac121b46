/// Shapes, the trees over points and triangles, and what these answer.
///
/// All geometry here is in `float`; distances come back in `double`. A query point in `double` is narrowed before it
/// is compared with a box.
#pragma once

#include "znGeom/spatial/queries.h"
#include "znGeom/spatial/shapes.h"
#include "znGeom/spatial/trees.h"
