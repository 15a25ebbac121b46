#include "znGeom/editing/duplicates.h"

#include "znGeom/editing/internal/vertex_order.h"

namespace znGeom {

int meshCountDuplicates(const PointMesh& mesh, znUtil::Progress& progress)
{
    if (mesh.getNumVertices() == 0 || progress.cancelled()) return 0;
    const float* positions = mesh.getVerticesRaw();
    const internal::VertexOrder order = internal::sortVertices(
        mesh.getNumVertices(), {{positions, 3}, {positions + 1, 3}, {positions + 2, 3}}, znUtil::ThreadPool::get());
    if (progress.cancelled()) return 0;

    const MeshVertex* vertices = mesh.getVertices();
    int count = 0;
    for (int place = 0; place < order.count; ++place)
        count += order.sameAsBefore(place) && isFinite(vertices[order.vertex(place)]);
    progress.set(1);
    return count;
}

} // namespace znGeom
