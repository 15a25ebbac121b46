/// Between plain arrays and the library's mesh.
#pragma once

#include "bench/generate.h"
#include "znGeom/foundation/mesh.h"

#include <algorithm>
#include <memory>

namespace bench {

inline std::unique_ptr<znGeom::CompactMesh> toCompact(const Soup& soup)
{
    auto mesh = std::make_unique<znGeom::CompactMesh>();
    mesh->resizeVertexArray(soup.numVertices());
    std::copy(soup.positions.begin(), soup.positions.end(), mesh->getVerticesRaw());
    mesh->copyTriangles(soup.numTriangles(), soup.triangles.data());
    return mesh;
}

inline Soup toSoup(const znGeom::CompactMesh& mesh)
{
    const float* positions = mesh.getVerticesRaw();
    const int* triangles = mesh.getTrianglesRaw();
    return {{positions, positions + 3 * static_cast<std::ptrdiff_t>(mesh.getNumVertices())},
            {triangles, triangles + 3 * static_cast<std::ptrdiff_t>(mesh.getNumTriangles())}};
}

} // namespace bench
