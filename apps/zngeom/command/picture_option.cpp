#include "apps/zngeom/command/picture_option.h"

#include <CLI/App.hpp>
#include <charconv>

#include "apps/zngeom/picture/png_file.h"

namespace tool {

namespace {

/// Two numbers with an x between them; 0 by 0 for anything else.
PictureSize parseSize(const std::string& word)
{
    PictureSize size{0, 0};
    const char* end = word.data() + word.size();
    const auto [afterWidth, widthError] = std::from_chars(word.data(), end, size.width);
    if (widthError != std::errc() || afterWidth == end || *afterWidth != 'x') return {0, 0};
    const auto [afterHeight, heightError] = std::from_chars(afterWidth + 1, end, size.height);
    return heightError == std::errc() && afterHeight == end ? size : PictureSize{0, 0};
}

std::string problemOfSize(const std::string& word)
{
    constexpr int least = 300, most = 4000;
    const auto [width, height] = parseSize(word);
    const bool isGood = width >= least && width <= most && height >= least && height <= most;
    return isGood ? "" : "must be WIDTHxHEIGHT, both between 300 and 4000";
}

} // namespace

void addPictureOptions(CLI::App& app, PictureOptions& options, const std::string& about)
{
    CLI::Option* picture = app.add_option("--picture", options.path, about);
    app.add_option_function<std::string>(
           "--picture-size", [&options](const std::string& word) { options.size = parseSize(word); },
           "The size of the picture in pixels")
        ->check(CLI::Validator(problemOfSize, ""))
        ->option_text("WIDTHxHEIGHT [1280x800]")
        ->needs(picture);
}

} // namespace tool
