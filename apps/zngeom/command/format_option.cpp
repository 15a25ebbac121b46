#include "apps/zngeom/command/format_option.h"

#include <CLI/App.hpp>
#include <vector>

#include "apps/zngeom/files/mesh_files.h"

namespace tool {

namespace {

std::vector<std::string> words()
{
    std::vector<std::string> result;
    for (const FileFormat& format : fileFormats())
        for (const std::string& extension : format.extensions) result.push_back(extension.substr(1));
    return result;
}

} // namespace

void addFormatOption(CLI::App& app, StreamFormats& formats)
{
    app.add_option("--format", formats.input, "The format of standard input (-), and of files whose names don't tell")
        ->check(CLI::IsMember(words()))
        ->option_text("obj|ply|stl|...");
}

void addFormatOptions(CLI::App& app, StreamFormats& formats)
{
    addFormatOption(app, formats);
    app.add_option("--output-format", formats.output, "The same for what is written [that of --format]")
        ->check(CLI::IsMember(words()))
        ->option_text("obj|ply|stl|...");
}

} // namespace tool
