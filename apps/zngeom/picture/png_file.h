/// Writing a picture.
#pragma once

#include <string>

#include "apps/zngeom/picture/canvas.h"

namespace tool {

/// Checks, before any work is done, that a path is that of a picture; fails if not.
void checkPictureName(const std::string& path);

/// Writes a PNG file, which replaces the old one when it is complete. Fails with one line that
/// begins with the path.
void writePng(const Image& image, const std::string& path);

} // namespace tool
