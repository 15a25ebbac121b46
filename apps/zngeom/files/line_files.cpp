#include "apps/zngeom/files/line_files.h"

#include <charconv>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

using znGeom::MeshFormat;

/// As many digits as positions from `float` corners are worth.
void appendPoint(const znLinear::Point& point, std::string& text)
{
    const char* separator = "";
    for (const double value : {point.x, point.y, point.z}) {
        char digits[32];
        text.append(separator);
        text.append(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 9).ptr);
        separator = " ";
    }
    text += '\n';
}

std::string asObj(const std::vector<Segment>& segments)
{
    std::string text;
    for (const Segment& segment : segments)
        for (const znLinear::Point& end : segment) appendPoint(end, text += "v ");
    for (std::size_t i = 1; i < 2 * segments.size(); i += 2)
        text += "l " + std::to_string(i) + ' ' + std::to_string(i + 1) + '\n';
    return text;
}

std::string asPly(const std::vector<Segment>& segments)
{
    std::string text = "ply\nformat ascii 1.0\nelement vertex " + std::to_string(2 * segments.size()) +
                       "\nproperty double x\nproperty double y\nproperty double z\nelement edge " +
                       std::to_string(segments.size()) + "\nproperty int vertex1\nproperty int vertex2\nend_header\n";
    for (const Segment& segment : segments)
        for (const znLinear::Point& end : segment) appendPoint(end, text);
    for (std::size_t i = 0; i < 2 * segments.size(); i += 2)
        text += std::to_string(i) + ' ' + std::to_string(i + 1) + '\n';
    return text;
}

} // namespace

void checkLineFormat(const std::string& path, const std::string& word)
{
    const FileFormat& format = formatOf(path, word);
    if (format.format != MeshFormat::Obj && format.format != MeshFormat::Ply)
        throw Failure(path + ": " + format.name + " files are not written with lines; write .obj or .ply instead");
}

void saveLines(const std::vector<Segment>& segments, const std::string& path, const std::string& word)
{
    checkLineFormat(path, word);
    writeFile(formatOf(path, word).format == MeshFormat::Ply ? asPly(segments) : asObj(segments), path);
}

} // namespace tool
