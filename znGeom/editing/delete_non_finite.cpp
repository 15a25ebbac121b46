#include "znGeom/editing/delete_non_finite.h"

#include "znGeom/editing/delete_selected.h"

namespace znGeom {

int meshDeleteNonFinite(CompactMesh& mesh)
{
    const MeshVertex* const vertices = std::as_const(mesh).getVertices();
    const MeshTriangle* const triangles = std::as_const(mesh).getTriangles();
    BitVector badTriangles(mesh.getNumTriangles()), unneeded(mesh.getNumVertices());
    for (int v = 0; v < mesh.getNumVertices(); ++v)
        if (!isFinite(vertices[v])) unneeded.setBit(v);
    const auto isBad = [&](int corner) { return !isFinite(vertices[corner]); };
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = triangles[t].corners;
        if (!isBad(a) && !isBad(b) && !isBad(c)) continue;
        badTriangles.setBit(t);
        for (const int corner : triangles[t].corners) unneeded.setBit(corner);
    }
    const int numBad = badTriangles.getNumSetBits();
    if (numBad == 0) return 0;
    mesh.getSelectedTriangles() = std::move(badTriangles);
    mesh.getSelectedVertices() = std::move(unneeded);
    MeshDeleteSelected{mesh}();
    return numBad;
}

} // namespace znGeom
