#include "apps/zngeom/command/fold_option.h"

#include <CLI/App.hpp>

#include <charconv>

namespace tool {

namespace {

std::string problemOfAngle(const std::string& word)
{
    double degrees = -1;
    const char* end = word.data() + word.size();
    const bool isNumber = std::from_chars(word.data(), end, degrees).ptr == end;
    return isNumber && degrees >= 0 && degrees <= 180 ? "" : "must be an angle between 0 and 180 degrees";
}

} // namespace

void addFoldOption(CLI::App& app, std::optional<double>& degrees)
{
    app.add_option("--angles", degrees, "Also look for edges folded to this angle or less, in degrees: 180 is flat")
        ->check(CLI::Validator(problemOfAngle, ""))
        ->option_text("DEG");
}

} // namespace tool
