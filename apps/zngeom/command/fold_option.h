/// The option of commands that look for folds.
#pragma once

#include <optional>

namespace CLI {
class App;
}

namespace tool {

/// Adds `--angles DEG`.
void addFoldOption(CLI::App& app, std::optional<double>& degrees);

} // namespace tool
