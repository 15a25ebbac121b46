#include <cmath>
#include <cstdint>

#include "apps/zngeom/byte_sink.h"
#include "apps/zngeom/mesh_writers.h"
#include "apps/zngeom/pacer.h"

namespace tool {

namespace {

/// Of length 1; zero for a triangle without area.
znLinear::Vector triangleNormal(const znGeom::CompactMesh& mesh, const znGeom::MeshTriangle& triangle)
{
    const znLinear::Point a = mesh.getVertices()[triangle[0]].asPoint();
    const znLinear::Vector normal =
        znLinear::cross(mesh.getVertices()[triangle[1]].asPoint() - a, mesh.getVertices()[triangle[2]].asPoint() - a);
    const double length = std::sqrt(normal.dx * normal.dx + normal.dy * normal.dy + normal.dz * normal.dz);
    return length > 0 ? normal / length : znLinear::Vector(0, 0, 0);
}

} // namespace

void writeStl(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress)
{
    const int numTriangles = mesh.getNumTriangles();
    Pacer pacer(progress, static_cast<std::size_t>(numTriangles));
    ByteSink sink(path);
    std::string header = "binary STL by zngeom " ZNGEOM_VERSION; // must not begin with the word of the text form
    header.resize(80, ' ');
    sink.text(header);
    sink.binary(static_cast<std::uint32_t>(numTriangles));
    for (int i = 0; i < numTriangles; pacer.at(static_cast<std::size_t>(++i))) {
        const znGeom::MeshTriangle& triangle = mesh.getTriangles()[i];
        const znLinear::Vector normal = triangleNormal(mesh, triangle);
        for (const double component : {normal.dx, normal.dy, normal.dz}) sink.binary(static_cast<float>(component));
        for (const int corner : triangle.corners) sink.floats(mesh.getVerticesRaw() + 3 * corner, 3);
        sink.binary(std::uint16_t(0));
    }
    sink.finish();
}

} // namespace tool
