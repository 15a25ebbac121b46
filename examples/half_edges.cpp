// Builds a half-edge mesh, walks it, and edits it.
#include <znGeom/znGeom.h>

#include <cstdio>
#include <vector>

namespace {

using namespace znGeom;

/// A sheet of columns x rows vertices.
std::vector<TopoMeshVertex> makeSheet(TopoMesh& mesh, int columns, int rows)
{
    std::vector<TopoMeshVertex> vertices;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            vertices.push_back(mesh.allocVertex({double(column), double(row), 0}));
    const auto at = [&](int column, int row) { return vertices[static_cast<size_t>(row * columns + column)]; };
    for (int row = 0; row + 1 < rows; ++row)
        for (int column = 0; column + 1 < columns; ++column)
            mesh.allocQuad(at(column, row), at(column + 1, row), at(column + 1, row + 1), at(column, row + 1));
    meshTwin(mesh);
    return vertices;
}

int boundaryLength(TopoMeshVertex start)
{
    int length = 0;
    for (TopoMeshBoundaryIterator it(start, true); it.valid(); it.next()) ++length;
    return length;
}

/// V - E + F: 1 for a sheet without holes.
int eulerNumber(const TopoMesh& mesh)
{
    int edges = 0;
    for (const TopoMeshEdge e : edgesOf(mesh))
        if (!e->twin || e < e->twin) ++edges; // each pair once
    return mesh.numVertices() - edges + mesh.numFaces();
}

} // namespace

int main()
{
    TopoMesh mesh;
    const std::vector<TopoMeshVertex> vertices = makeSheet(mesh, 4, 4);
    std::printf("%d vertices, %d faces, Euler number %d, boundary of %d edges\n", mesh.numVertices(), mesh.numFaces(),
                eulerNumber(mesh), boundaryLength(vertices[0]));

    // A centre for every quad: four triangles each. Edges that are new stand at the end of the lists.
    for (TopoMeshFace f = mesh.firstFace(); f && f.numVertices() == 4; f = f->next) mesh.subdivideFace(f, f.centroid());

    // The faces round a vertex, by the half-edges that leave it.
    const TopoMeshVertex inner = vertices[5];
    std::printf("round vertex %d:", inner.number());
    for (const TopoMeshEdge spoke : fanOf(inner)) std::printf(" %d", endOf(spoke).number());
    std::printf("\n");

    // Swapping twice restores; collapsing takes two triangles away.
    const TopoMeshEdge edge = inner->edge;
    const bool swapped = mesh.swapEdge(edge) && mesh.swapEdge(edge);
    const int before = mesh.numFaces();
    const TopoMeshVertex left = mesh.collapseEdge(edge);
    mesh.setPoint(left, {1.25, 1.25, 0});
    std::printf("collapsed: %d faces, Euler number %d, valence %d\n", mesh.numFaces(), eulerNumber(mesh),
                left.valence());

    // Who edits tells the mesh once, at the end.
    TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
    mesh.modified(modification);
    return swapped && mesh.numFaces() == before - 2 && eulerNumber(mesh) == 1 ? 0 : 1;
}
