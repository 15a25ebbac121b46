#include "znGeom/foundation/mesh/mesh_adjacency.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace znGeom {

void MeshAdjTris::copyTriangles(int vertex, int* out, const int* triangles) const
{
    for (const int triangle : around(vertex)) out = std::copy_n(triangles + 3 * std::ptrdiff_t(triangle), 3, out);
}

MeshAdjVertices::~MeshAdjVertices()
{
    std::free(offsets);
    std::free(data);
}

void MeshAdjVertices::swap(MeshAdjVertices& other)
{
    std::swap(numVertices, other.numVertices);
    std::swap(maxNeighbours, other.maxNeighbours);
    std::swap(offsets, other.offsets);
    std::swap(data, other.data);
}

MeshSubset::MeshSubset(int vertexCount, const int* vertexIndices, int triangleCount, const int* triangleIndices)
    : numVertices(vertexCount), numTriangles(triangleCount), vertices(new int[static_cast<size_t>(vertexCount)]),
      triangles(new int[static_cast<size_t>(triangleCount)])
{
    std::copy_n(vertexIndices, vertexCount, vertices);
    std::copy_n(triangleIndices, triangleCount, triangles);
}

MeshSubset::~MeshSubset()
{
    delete[] vertices;
    delete[] triangles;
}

} // namespace znGeom
