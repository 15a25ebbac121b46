#include "apps/zngeom/picture/value_files.h"

#include <bit>
#include <charconv>
#include <cstdint>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

bool isPly(const std::string& path)
{
    const FileFormat* const format = findFormat(path);
    return format && format->format == znGeom::MeshFormat::Ply;
}

/// The lowest byte first.
void appendBytes(std::string& bytes, std::uint32_t number)
{
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
}
void appendBytes(std::string& bytes, float number) { appendBytes(bytes, std::bit_cast<std::uint32_t>(number)); }

std::string asPly(const znGeom::CompactMesh& mesh, const std::vector<float>& values, const ValueScale& scale)
{
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(values.size()) +
                        "\nproperty float x\nproperty float y\nproperty float z\nproperty float value\n"
                        "property uchar red\nproperty uchar green\nproperty uchar blue\nelement face " +
                        std::to_string(mesh.getNumTriangles()) +
                        "\nproperty list uchar int vertex_indices\nend_header\n";
    bytes.reserve(bytes.size() + 19 * values.size() + 13 * static_cast<std::size_t>(mesh.getNumTriangles()));
    for (std::size_t v = 0; v < values.size(); ++v) {
        const znGeom::MeshVertex& at = mesh.getVertices()[v];
        for (const float number : {at.x, at.y, at.z, values[v]}) appendBytes(bytes, number);
        const Colour colour = scale.at(static_cast<double>(values[v]));
        for (const std::uint8_t part : {colour.red, colour.green, colour.blue}) bytes += static_cast<char>(part);
    }
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        bytes += '\3';
        for (const int corner : mesh.getTriangles()[t].corners) appendBytes(bytes, static_cast<std::uint32_t>(corner));
    }
    return bytes;
}

std::string asText(const std::vector<float>& values)
{
    std::string text;
    for (const float value : values) {
        char digits[32];
        text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr) += '\n';
    }
    return text;
}

} // namespace

void checkValueFormat(const std::string& path)
{
    const FileFormat* const format = findFormat(path);
    if (path == standardStream || (format && format->format == znGeom::MeshFormat::Plain) || isPly(path)) return;
    throw Failure(path + ": values are written to .ply, with the mesh, or to .txt, alone");
}

std::size_t saveValues(const znGeom::CompactMesh& mesh, const std::vector<float>& values, const ValueScale& scale,
                       const std::string& path)
{
    const std::string bytes = isPly(path) ? asPly(mesh, values, scale) : asText(values);
    writeFile(bytes, path);
    return bytes.size();
}

} // namespace tool
