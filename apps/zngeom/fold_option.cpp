#include "apps/zngeom/fold_option.h"

#include <CLI/App.hpp>

namespace tool {

void addFoldOption(CLI::App& app, std::optional<double>& degrees)
{
    app.add_option("--angles", degrees, "Also look for edges folded to this angle or less, in degrees: 180 is flat")
        ->check(CLI::Range(0.0, 180.0))
        ->option_text("DEG");
}

} // namespace tool
