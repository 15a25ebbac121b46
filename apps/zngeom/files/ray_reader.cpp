#include "apps/zngeom/files/ray_reader.h"

#include <cmath>
#include <string_view>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/number_text.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

constexpr int numbersPerRay = 6;

/// As much of a word as fits into a message.
std::string beginningOf(std::string_view word)
{
    constexpr std::size_t most = 24;
    return std::string(word.substr(0, most)) + (word.size() > most ? "..." : "");
}

/// The numbers before a comment. Fails for a word that is none, and for too many.
/// \return how many
int parseNumbers(std::string_view line, double* numbers)
{
    line = line.substr(0, line.find('#'));
    constexpr std::string_view separators = " \t,\r";
    int count = 0;
    for (std::size_t at = 0; (at = line.find_first_not_of(separators, at)) < line.size();) {
        const std::size_t end = std::min(line.find_first_of(separators, at), line.size());
        const std::string_view word = line.substr(at, end - at);
        const std::optional<double> number = finiteNumber(word);
        if (!number) throw Failure("\"" + beginningOf(word) + "\" is not a finite number");
        if (count == numbersPerRay) throw Failure("a ray has more than six numbers");
        numbers[count++] = *number;
        at = end;
    }
    return count;
}

/// Whatever the lengths of the components, no square overflows or vanishes.
znLinear::Vector unitOf(znLinear::Vector direction)
{
    const double largest = std::max({std::fabs(direction.dx), std::fabs(direction.dy), std::fabs(direction.dz)});
    if (largest == 0) throw Failure("the direction has no length");
    direction = {direction.dx / largest, direction.dy / largest, direction.dz / largest};
    return direction / direction.length();
}

std::vector<TextRay> parseRays(std::string_view text, znUtil::Progress& progress)
{
    std::vector<TextRay> rays;
    Pacer pacer(progress, text.size());
    std::size_t begin = 0;
    for (int line = 1; begin < text.size(); ++line) {
        pacer.at(begin);
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        try {
            double n[numbersPerRay];
            const int count = parseNumbers(text.substr(begin, end - begin), n);
            if (count > 0 && count < numbersPerRay) throw Failure("a ray has fewer than six numbers");
            if (count > 0) rays.push_back({{n[0], n[1], n[2]}, unitOf({n[3], n[4], n[5]})});
        } catch (const Failure& failure) {
            throw Failure("line " + std::to_string(line) + ": " + failure.what());
        }
        begin = end + 1;
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
