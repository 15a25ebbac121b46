/// Files of lines.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "znGeom/foundation/linear/point.h"

namespace tool {

using Segment = std::array<znLinear::Point, 2>;

/// Checks, before any work is done, that lines can be written to this path; fails if not.
/// \param word  as in `formatOf`
void checkLineFormat(const std::string& path, const std::string& word);

/// Writes each segment as two vertices and a line between them: OBJ with `v` and `l`, or PLY as text with elements
/// `vertex` and `edge`. "-" is standard output. Fails with one line that begins with the path.
void saveLines(const std::vector<Segment>& segments, const std::string& path, const std::string& word);

} // namespace tool
