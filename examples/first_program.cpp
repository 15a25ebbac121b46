#include <znGeom/znGeom.h>

#include <cstdio>

int main(int argc, char** argv)
{
    znGeom::CompactMesh mesh;
    if (argc < 2) return 1;
    const znGeom::MeshLoadResult loaded = znGeom::meshLoad(mesh, znOS::Filename(argv[1])); // OBJ, PLY, STL, OFF, ...
    if (!loaded) return std::fprintf(stderr, "%s: %s\n", argv[1], loaded.message.c_str()), 1;

    znGeom::meshCompact(mesh); // vertices at the same place become one

    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);

    std::printf("%d triangles, %d vertices, at most %d neighbours\n", mesh.getNumTriangles(), mesh.getNumVertices(),
                adjVertices.maxNeighbours);
    if (argc > 2 && !znGeom::meshSave(mesh, znOS::Filename(argv[2]))) return 1;
}
