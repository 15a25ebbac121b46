#include "znGeom/editing/duplicates.h"

#include <cmath>

#include "znGeom/editing/internal/vertex_order.h"

namespace znGeom {

int meshCountDuplicates(const PointMesh& mesh, znUtil::Progress& progress)
{
    if (mesh.getNumVertices() == 0 || progress.cancelled()) return 0;
    const float* positions = mesh.getVerticesRaw();
    const VertexOrder order = sortVertices(
        mesh.getNumVertices(), {{positions, 3}, {positions + 1, 3}, {positions + 2, 3}}, znUtil::ThreadPool::get());
    if (progress.cancelled()) return 0;

    const MeshVertex* vertices = mesh.getVertices();
    int count = 0;
    for (int place = 0; place < order.count; ++place) {
        if (!order.sameAsBefore(place)) continue;
        const MeshVertex& vertex = vertices[order.vertex(place)];
        count += std::isfinite(vertex.x) && std::isfinite(vertex.y) && std::isfinite(vertex.z);
    }
    progress.set(1);
    return count;
}

} // namespace znGeom
