#include "apps/zngeom/command/axis_option.h"

#include <CLI/App.hpp>

namespace tool {

CLI::Option* addAlongOption(CLI::App& app, std::string& word, const std::string& help)
{
    word = "z";
    return app.add_option("--along", word, help)->check(CLI::IsMember({"x", "y", "z"}))->option_text("x|y|z [z]");
}

int axisFrom(const std::string& word) { return word[0] - 'x'; }

znLinear::Point2 seenAlong(int axis, const znLinear::Point& point)
{
    return {point[(axis + 1) % 3], point[(axis + 2) % 3]};
}

} // namespace tool
