/// What the commands that take parts of a mesh have in common.
#pragma once

#include <string>

#include "apps/zngeom/surface.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tool {

/// Adds `--by edges|vertices`.
CLI::Option* addAcrossOption(CLI::App& app, std::string& word);
/// What the word of that option stands for.
Across acrossOf(const std::string& word);

/// Fails for a mesh without triangles, which has no parts.
void checkHasTriangles(const znGeom::CompactMesh& mesh, const std::string& path);

} // namespace tool
