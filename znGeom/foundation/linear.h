/// Numeric value types: points, vectors, normals, lines, planes, ranges, matrices and where they meet.
///
/// All are plain values that are copied freely and read by any number of threads. Meshes store `float`; decisions are
/// taken in `double`. Failure is told in the result: a `bool`, an `ok` argument, or the valid flag of a `Normal`.
#pragma once

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/linear/narrow.h"
#include "znGeom/foundation/linear/normal.h"
#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/linear/proj_matrix.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/linear/vector.h"
