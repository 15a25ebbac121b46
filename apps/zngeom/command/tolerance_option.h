/// A tolerance on the command line: a distance, or a percentage of the diagonal of the bounding box.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tool {

/// Adds `--tolerance DISTANCE|PERCENT%`.
CLI::Option* addToleranceOption(CLI::App& app, std::string& word, const std::string& help);

/// The distance that such a word means for a mesh. Fails where the bounding box is not finite and it is a percentage.
double toleranceFor(const std::string& word, const znGeom::CompactMesh& mesh, const std::string& path);

} // namespace tool
