/// Polylines moved and turned.
#pragma once

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/planar/polylines/polyline.h"

namespace znGeom {

/// Multiplies all points of a polyline by a matrix; the parameters stay. Ends in `modified`. Linear.
ZNGEOM_API void polylineTransform(Polyline& line, const znLinear::AffineMatrix& m);

} // namespace znGeom
