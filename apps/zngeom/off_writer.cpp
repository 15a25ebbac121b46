#include "apps/zngeom/byte_sink.h"
#include "apps/zngeom/mesh_writers.h"
#include "apps/zngeom/pacer.h"

namespace tool {

void writeOff(const znGeom::CompactMesh& mesh, const std::string& path, znUtil::Progress& progress)
{
    const int numVertices = mesh.getNumVertices(), numTriangles = mesh.getNumTriangles();
    Pacer pacer(progress, static_cast<std::size_t>(numVertices) + static_cast<std::size_t>(numTriangles));
    std::size_t done = 0;
    ByteSink sink(path);
    sink.text("OFF\n" + std::to_string(numVertices) + " " + std::to_string(numTriangles) + " 0\n");
    for (int vertex = 0; vertex < numVertices; ++vertex, pacer.at(++done)) {
        const znGeom::MeshVertex& position = mesh.getVertices()[vertex];
        sink.decimal(position.x);
        sink.text(" ");
        sink.decimal(position.y);
        sink.text(" ");
        sink.decimal(position.z);
        sink.text("\n");
    }
    for (int triangle = 0; triangle < numTriangles; ++triangle, pacer.at(++done)) {
        sink.text("3");
        for (const int corner : mesh.getTriangles()[triangle].corners) {
            sink.text(" ");
            sink.decimal(corner);
        }
        sink.text("\n");
    }
    sink.finish();
}

} // namespace tool
