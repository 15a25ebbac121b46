#include <cmath>
#include <cstdint>

#include "znGeom/files/internal/save_sink.h"

namespace znGeom::internal {

namespace {

/// Of length 1; zero for a triangle without area.
znLinear::Vector triangleNormal(const MeshVertex& a, const MeshVertex& b, const MeshVertex& c)
{
    const znLinear::Vector normal = znLinear::cross(b.asPoint() - a.asPoint(), c.asPoint() - a.asPoint());
    const double length = std::sqrt(normal.dx * normal.dx + normal.dy * normal.dy + normal.dz * normal.dz);
    return length > 0 ? normal / length : znLinear::Vector(0, 0, 0);
}

std::int64_t countTriangles(const CompactMesh& mesh, const SaveSink& sink)
{
    if (!sink.takesPolygons()) return mesh.getNumTriangles();
    return std::int64_t(mesh.getNumPolyPoints()) - 2 * std::int64_t(mesh.getNumPolys());
}

void saveTriangle(const CompactMesh& mesh, const int (&corners)[3], SaveSink& sink)
{
    const MeshVertex* vertices = mesh.getVertices();
    const znLinear::Vector normal = triangleNormal(vertices[corners[0]], vertices[corners[1]], vertices[corners[2]]);
    for (const double component : {normal.dx, normal.dy, normal.dz}) sink.binary(static_cast<float>(component));
    for (const int corner : corners) sink.binaries(&vertices[corner].x, 3);
    sink.binary(std::uint16_t(0));
}

} // namespace

void saveStl(const CompactMesh& mesh, SaveSink& sink)
{
    std::string header = "binary STL by znGeom"; // must not begin with the word of the text form
    header.resize(80, ' ');
    sink.text(header);
    sink.binary(static_cast<std::uint32_t>(countTriangles(mesh, sink)));
    forEachFace(mesh, sink, [&](const int* corners, int numCorners) {
        for (int i = 2; i < numCorners; ++i) saveTriangle(mesh, {corners[0], corners[i - 1], corners[i]}, sink);
    });
}

} // namespace znGeom::internal
