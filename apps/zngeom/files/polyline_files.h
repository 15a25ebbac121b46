/// Files of polylines.
#pragma once

#include <string>
#include <vector>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

struct Polyline
{
    zn::vector<znLinear::Point> points;
    bool closed = false; ///< the first point is not repeated at the end
};

/// Reads the polylines of an OBJ file (`l`) or of a PLY file as text (element `edge`), or of a text with a point on
/// each line and empty lines between the polylines. Lines of two points that meet end to end are joined. A polyline
/// that comes back to its first point is closed.
///
/// Fails with one line that begins with the path: without a polyline of two points, and where a number is none, or not
/// finite. May be cancelled.
/// \param word  names a format for a path whose extension gives none; without one it is a text
std::vector<Polyline> loadPolylines(const std::string& path, znUtil::Progress& progress, const std::string& word = "");

/// Writes them: OBJ with one `l` for each, or PLY as text. "-" is standard output; what `checkLineFormat` accepts.
void savePolylines(const std::vector<Polyline>& polylines, const std::string& path, const std::string& word);

} // namespace tool
