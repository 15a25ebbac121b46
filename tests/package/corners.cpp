#include "corners.h"

#include <znGeom/analysis/adjacency.h>

int countCorners()
{
    const int triangle[] = {0, 1, 2};
    znGeom::CompactMesh mesh;
    mesh.resizeVertexArray(3);
    mesh.copyTriangles(1, triangle);
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    return adjTris.numTris(0) + adjTris.numTris(1) + adjTris.numTris(2);
}
