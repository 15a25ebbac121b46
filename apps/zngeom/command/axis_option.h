/// The option of commands that look along an axis.
#pragma once

#include <string>

#include "znGeom/foundation/linear/point.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tool {

/// Adds `--along x|y|z`; the word begins as "z".
CLI::Option* addAlongOption(CLI::App& app, std::string& word, const std::string& help);

/// 0 to 2.
int axisFrom(const std::string& word);

/// A point as it is seen against an axis: the next two axes lead right and up.
znLinear::Point2 seenAlong(int axis, const znLinear::Point& point);

} // namespace tool
