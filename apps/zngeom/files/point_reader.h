/// Reading points.
#pragma once

#include <string>
#include <vector>

#include "znGeom/foundation/mesh/mesh_records.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// The vertices of a mesh file, or the points of a text file: x y z on each line, separated by blanks or commas; "#"
/// starts a comment, and empty lines are skipped. A file is text if its extension belongs to no mesh format; a file
/// with an extension of the plain format is text if its first line doesn't hold two numbers.
///
/// Fails with one line that begins with the path; for a text it names the line. Coordinates are finite. May be
/// cancelled.
/// \param word  names a format for a path whose extension gives none, also for "-"; without one it is a text
std::vector<znGeom::MeshVertex> loadPoints(const std::string& path, znUtil::Progress& progress,
                                           const std::string& word = "");

/// Fails for a mesh with a vertex whose coordinates are infinite or not numbers.
void checkFinite(const znGeom::MeshVertex* vertices, int count, const std::string& path);

} // namespace tool
