#include <algorithm>
#include <cstdint>

#include "znGeom/files/internal/save_sink.h"

namespace znGeom::internal {

namespace {

/// A face's number of corners takes one byte where it fits.
bool hasLargePolygons(const CompactMesh& mesh, const SaveSink& sink)
{
    const int* lengths = mesh.getPolyLengths();
    const int numPolys = sink.takesPolygons() ? mesh.getNumPolys() : 0;
    return std::any_of(lengths, lengths + numPolys, [](int length) { return length > 255; });
}

void saveHeader(const CompactMesh& mesh, bool large, SaveSink& sink)
{
    sink.text("ply\nformat binary_little_endian 1.0\nelement vertex ");
    sink.decimal(mesh.getNumVertices());
    sink.text("\nproperty float x\nproperty float y\nproperty float z\n");
    if (mesh.getNormals()) sink.text("property float nx\nproperty float ny\nproperty float nz\n");
    if (mesh.getUVs()) sink.text("property float s\nproperty float t\n");
    sink.text("element face ");
    sink.decimal(countFaces(mesh, sink));
    sink.text(large ? "\nproperty list int int vertex_indices\nend_header\n"
                    : "\nproperty list uchar int vertex_indices\nend_header\n");
}

} // namespace

void savePly(const CompactMesh& mesh, SaveSink& sink)
{
    const bool large = hasLargePolygons(mesh, sink);
    saveHeader(mesh, large, sink);
    forEachVertex(mesh, sink, [&](int vertex) {
        sink.binaries(mesh.getVerticesRaw() + 3 * std::ptrdiff_t(vertex), 3);
        if (mesh.getNormals()) sink.binaries(mesh.getNormalsRaw() + 3 * std::ptrdiff_t(vertex), 3);
        if (mesh.getUVs()) sink.binaries(mesh.getUVsRaw() + 2 * std::ptrdiff_t(vertex), 2);
    });
    forEachFace(mesh, sink, [&](const int* corners, int numCorners) {
        if (large)
            sink.binary(numCorners);
        else
            sink.binary(static_cast<std::uint8_t>(numCorners));
        for (int i = 0; i < numCorners; ++i) sink.binary(corners[i]);
    });
}

} // namespace znGeom::internal
