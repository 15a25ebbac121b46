// A program outside the tree: two triangles that only touch become one surface.
#include <znGeom/znGeom.h>

#include <cstdio>
#include <cstring>

int main()
{
    const znGeom::MeshVertex corners[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}};
    const int triangles[] = {0, 1, 2, 3, 4, 5};

    znGeom::CompactMesh mesh(6, corners, nullptr, nullptr, nullptr);
    mesh.copyTriangles(2, triangles);

    znUtil::Progress progress;
    znGeom::meshCompact(mesh, progress);

    std::printf("znGeom %s: %d vertices, %d triangles\n", zngeom::version(), mesh.getNumVertices(),
                mesh.getNumTriangles());
    return mesh.getNumVertices() == 4 && std::strcmp(zngeom::version(), ZNGEOM_VERSION) == 0 ? 0 : 1;
}
