#include <znGeom/znGeom.h>

#include <cstdio>

int main(int argc, char** argv)
{
    znGeom::CompactMesh mesh;
    if (argc < 2 || !znGeom::meshReadObj(mesh, znOS::Filename(argv[1]))) return 1;

    znUtil::Progress progress;
    znGeom::meshCompact(mesh, progress); // vertices at the same place become one

    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);

    std::printf("%d triangles, %d vertices, at most %d neighbours\n", mesh.getNumTriangles(), mesh.getNumVertices(),
                adjVertices.maxNeighbours);
}
