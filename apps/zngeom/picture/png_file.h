/// Writing a picture.
#pragma once

#include <string>

#include "apps/zngeom/picture/canvas.h"

namespace tool {

/// Writes a PNG file, which replaces the old one when it is complete. Fails with one line that
/// begins with the path.
void writePng(const Image& image, const std::string& path);

} // namespace tool
