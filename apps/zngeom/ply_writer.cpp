#include <cstdint>

#include "apps/zngeom/byte_sink.h"
#include "apps/zngeom/mesh_writers.h"
#include "apps/zngeom/pacer.h"

namespace tool {

namespace {

std::string plyHeader(const znGeom::CompactMesh& mesh)
{
    std::string header = "ply\nformat binary_little_endian 1.0\nelement vertex " +
                         std::to_string(mesh.getNumVertices()) +
                         "\nproperty float x\nproperty float y\nproperty float z\n";
    if (mesh.getNormals()) header += "property float nx\nproperty float ny\nproperty float nz\n";
    if (mesh.getUVs()) header += "property float s\nproperty float t\n";
    return header + "element face " + std::to_string(mesh.getNumTriangles()) +
           "\nproperty list uchar int vertex_indices\nend_header\n";
}

} // namespace

void writePly(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress)
{
    Pacer pacer(progress,
                static_cast<std::size_t>(mesh.getNumVertices()) + static_cast<std::size_t>(mesh.getNumTriangles()));
    std::size_t done = 0;
    ByteSink sink(path);
    sink.text(plyHeader(mesh));
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex, pacer.at(++done)) {
        sink.floats(mesh.getVerticesRaw() + 3 * vertex, 3);
        if (mesh.getNormals()) sink.floats(mesh.getNormalsRaw() + 3 * vertex, 3);
        if (mesh.getUVs()) sink.floats(mesh.getUVsRaw() + 2 * vertex, 2);
    }
    for (int triangle = 0; triangle < mesh.getNumTriangles(); ++triangle, pacer.at(++done)) {
        sink.binary(std::uint8_t(3));
        for (const int corner : mesh.getTriangles()[triangle].corners) sink.binary(corner);
    }
    sink.finish();
}

} // namespace tool
