/// The options of commands that draw.
#pragma once

#include <string>

#include "apps/zngeom/picture/mesh_picture.h"

namespace CLI {
class App;
}

namespace tool {

struct PictureOptions
{
    std::string path; ///< empty for no picture
    PictureSize size;
};

/// Adds `--picture` and `--picture-size`.
void addPictureOptions(CLI::App& app, PictureOptions& options,
                       const std::string& about = "Draw the mesh with its defects: a PNG file");

} // namespace tool
