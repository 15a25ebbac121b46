/// The options that say what standard input and output are.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tool {

/// Words for `formatOf`.
struct StreamFormats
{
    std::string input, output;

    /// The output has the format of the input unless one is given.
    const std::string& ofOutput() const { return output.empty() ? input : output; }
};

/// Adds `--format`.
void addFormatOption(CLI::App& app, StreamFormats& formats);
/// Adds `--format` and `--output-format`, for commands that write a mesh.
void addFormatOptions(CLI::App& app, StreamFormats& formats);

} // namespace tool
