#include "apps/zngeom/files/ray_reader.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/text_lines.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

/// Whatever the lengths of the components, no square overflows or vanishes.
znLinear::Vector unitOf(znLinear::Vector direction, const TextLines& lines)
{
    const double largest = std::max({std::fabs(direction.dx), std::fabs(direction.dy), std::fabs(direction.dz)});
    if (largest == 0) lines.fail("the direction has no length");
    direction = {direction.dx / largest, direction.dy / largest, direction.dz / largest};
    return direction / direction.length();
}

std::vector<TextRay> parseRays(std::string_view text, znUtil::Progress& progress)
{
    std::vector<TextRay> rays;
    Pacer pacer(progress, text.size());
    for (TextLines lines(text); lines.next();) {
        pacer.at(lines.position());
        if (lines.words().empty()) continue;
        double n[6];
        lines.numbers(std::size(n), "a ray", n);
        rays.push_back({{n[0], n[1], n[2]}, unitOf({n[3], n[4], n[5]}, lines)});
    }
    if (rays.empty()) throw Failure("has no rays");
    return rays;
}

} // namespace

std::vector<TextRay> loadRays(const std::string& path, znUtil::Progress& progress)
try {
    progress.setCaption("reading");
    return parseRays(readFile(path, progress), progress);
} catch (const Failure& failure) {
    throw Failure(inputName(path) + ": " + failure.what());
}

} // namespace tool
