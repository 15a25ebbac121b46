#include "corners.h"

#include <znGeom/analysis/adjacency.h>
#include <znGeom/editing/weld.h>

int countCorners()
{
    const znGeom::MeshVertex corners[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}};
    const int triangles[] = {0, 1, 2, 3, 4, 5};
    znGeom::CompactMesh mesh(6, corners, nullptr, nullptr, nullptr);
    mesh.copyTriangles(2, triangles);

    znUtil::Progress progress;
    znGeom::meshCompact(mesh, progress);

    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    int numCorners = 0;
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) numCorners += adjTris.numTris(vertex);
    return numCorners;
}
