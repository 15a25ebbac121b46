// Reads a cage of polygons, pulls one face out, smooths the whole, and writes quads.
#include <znGeom/znGeom.h>

#include <cstdio>
#include <memory>

namespace {

using namespace znGeom;

/// A cube of six squares.
void makeCube(CompactMesh& mesh)
{
    mesh.resizeVertexArray(8);
    for (int i = 0; i < 8; ++i) {
        const float corner[] = {float(i & 1), float(i >> 1 & 1), float(i >> 2)};
        mesh.getVertices()[i].set(corner);
    }
    const int corners[] = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    mesh.resizePolyArrays(24, 6);
    for (int i = 0; i < 24; ++i) mesh.getPolyPoints()[i] = corners[i];
    for (int i = 0; i < 6; ++i) mesh.getPolyLengths()[i] = 4;
}

} // namespace

int main(int argc, char** argv)
{
    const char* const path = argc > 1 ? argv[1] : "smooth.obj";
    CompactMesh flat;
    makeCube(flat); // `meshLoad` gives polygons in the same way

    auto mesh = std::make_unique<TopoMesh>();
    meshConvertPolygons(flat, *mesh);
    znLinear::AffineMatrix out(0.5);  // half as large ...
    out.setRow(3, {1.5, 0.25, 0.25}); // ... and one to the side
    extrudeFace(*mesh, mesh->firstFace()->next->next->next->next->next, out);

    for (int level = 1; level <= 3; ++level) {
        mesh.reset(computeSubdivMesh(*mesh));
        std::printf("level %d: %d vertices, %d quads\n", level, mesh->numVertices(), mesh->numFaces());
    }
    meshConvertPolygons(*mesh, flat);
    MeshSaveOptions options;
    options.polygons = true;
    znUtil::Progress progress;
    const MeshSaveResult saved = meshSave(flat, znOS::Filename(path), options, progress);
    std::printf("%d polygons written to %s\n", saved.numPolygons, path);
    return saved ? 0 : 1;
}
