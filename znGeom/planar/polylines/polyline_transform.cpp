#include "znGeom/planar/polylines/polyline_transform.h"

namespace znGeom {

void polylineTransform(Polyline& line, const znLinear::AffineMatrix& m)
{
    const znLinear::AffineMatrix matrix = m; // its own copy: no point of the line can be one of its numbers
    for (int i = 0; i < line.getNumVertices(); ++i) line.getVertex(i).point = line.getVertex(i).point * matrix;
    line.modified();
}

} // namespace znGeom
