#include "znGeom/analysis/path_length.h"

namespace znGeom {

double meshPathLength(const PointMesh& mesh, std::span<const int> vertices, bool closed)
{
    if (vertices.empty()) return 0;
    const MeshVertex* positions = mesh.getVertices();
    double length = 0;
    znLinear::Point previous = positions[closed ? vertices.back() : vertices.front()].asPoint();
    for (const int vertex : vertices) {
        const znLinear::Point next = positions[vertex].asPoint();
        length += (next - previous).length();
        previous = next;
    }
    return length;
}

void meshPathLengths(const PointMesh& mesh, const MeshSequence& paths, bool closed, zn::vector<double>& lengths)
{
    lengths.setSize(paths.size());
    const int* first = paths.values.read();
    for (int i = 0; i < paths.size(); first += paths.getLength(i), ++i)
        lengths[i] = meshPathLength(mesh, {first, static_cast<size_t>(paths.getLength(i))}, closed);
}

} // namespace znGeom
