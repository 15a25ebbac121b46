/// Writing a picture.
#pragma once

#include <memory>
#include <string>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/picture/canvas.h"

namespace tool {

/// Checks, before any work is done, that a path is that of a picture; fails if not.
void checkPictureName(const std::string& path);

/// Reads a PNG file of up to 2^26 pixels; what is transparent lies on white. Fails with one line that begins with the
/// path. May be cancelled.
Image loadPng(const std::string& path, znUtil::Progress& progress);

/// Writes a PNG file beside its place, for `putInPlace`. Fails with one line that begins with the path.
std::unique_ptr<PendingFile> writePngAside(const Image& image, const std::string& path);

} // namespace tool
