/// What a file holds as seen along an axis: points and lines in the plane.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/picture/svg_drawing.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct PlaneLine
{
    std::vector<znLinear::Point2> points;
    bool closed = false; ///< the first point is not repeated at the end
};

struct PlaneShape
{
    zn::vector<znLinear::Point2> points; ///< all there are, those of the lines among them
    std::vector<PlaneLine> lines;        ///< empty where the file holds a surface or points alone
};

/// What is said to read here is what `loadPlaneShape` accepts.
constexpr const char* planeShapeRules =
    "IN is a mesh, whose vertices count; an OBJ file or a PLY text with lines and no faces; or a text with a point\n"
    "on each line, x y or x y z, divided by blanks or commas, where # starts a comment; - is standard input.\n"
    "Seen along z a point has the coordinates x y in the plane, along x it has y z, and along y it has z x.\n";

/// \param axis  0 to 2, along which it is seen. Points of two coordinates lie in the plane as they are, whatever the
///              axis
/// \param word  names a format for a path whose extension gives none; without one it is a text
///
/// Fails with one line that begins with the path; also without a point, and where a coordinate is not finite. May be
/// cancelled.
PlaneShape loadPlaneShape(const std::string& path, int axis, znUtil::Progress& progress, const std::string& word = "");

/// The lines, or else the points, some ten thousand of them where there are more.
void draw(const PlaneShape& shape, SvgDrawing& drawing);

} // namespace tool
