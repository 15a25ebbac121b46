#include "apps/zngeom/planar/rectangle_table.h"

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/text_lines.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

double sizeOf(const TextLines& lines, std::size_t word)
{
    const double size = lines.number(lines.words()[word]);
    if (size < 0) lines.fail(std::string(word == 0 ? "the width " : "the height ") + "is below 0");
    return size + 0.0; // which makes a negative zero a plain one
}

} // namespace

RectangleTable parseRectangles(std::string_view text, znUtil::Progress& progress)
{
    RectangleTable table;
    TextLines lines(text);
    Pacer pacer(progress, text.size());
    while (lines.next()) {
        pacer.at(lines.position());
        if (lines.words().empty()) continue;
        const double width = sizeOf(lines, 0);
        if (lines.words().size() < 2) lines.fail("a rectangle has a width and no height");
        table.sizes.push_back({width, sizeOf(lines, 1)});
        table.names.emplace_back(lines.from(2));
    }
    if (table.sizes.empty()) throw Failure("has no rectangles");
    return table;
}

RectangleTable loadRectangles(const std::string& path, znUtil::Progress& progress)
try {
    progress.setCaption("reading");
    return parseRectangles(readFile(path, progress), progress);
} catch (const Failure& failure) {
    throw Failure(inputName(path) + ": " + failure.what());
}

std::string placesAsText(const std::vector<znLinear::Range2d>& places, const std::vector<std::string>& names)
{
    std::string text;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const znLinear::Range2d& place = places[i];
        appendNumber(text, place.x.min);
        for (const double value : {place.y.min, place.x.size(), place.y.size()}) appendNumber(text += ',', value);
        if (!names[i].empty()) text += ',' + names[i];
        text += '\n';
    }
    return text;
}

} // namespace tool
