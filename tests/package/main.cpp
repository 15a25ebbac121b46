// A program outside the tree: two triangles that only touch become one surface.
#include <znGeom/znGeom.h>

#include <cstdio>

int main()
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

    std::printf("%d vertices, %d triangles, %d corners\n", mesh.getNumVertices(), mesh.getNumTriangles(), numCorners);
    return mesh.getNumVertices() == 4 && numCorners == 6 ? 0 : 1;
}
