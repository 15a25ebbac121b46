// Builds a cube of loose triangles in memory, welds it, and walks its neighbourhoods.
#include <znGeom/znGeom.h>

#include <cstdio>
#include <vector>

namespace {

/// A cube of 12 triangles that share no vertex.
void makeLooseCube(znGeom::CompactMesh& mesh)
{
    const float places[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    const int sides[6][4] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};

    std::vector<znGeom::MeshVertex> vertices;
    std::vector<int> triangles;
    for (const auto& side : sides) {
        for (const int corner : {0, 1, 2, 0, 2, 3}) {
            const float* place = places[side[corner]];
            triangles.push_back(static_cast<int>(vertices.size()));
            vertices.push_back({place[0], place[1], place[2]});
        }
    }
    const int numVertices = static_cast<int>(vertices.size());
    mesh = znGeom::CompactMesh(numVertices, vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(numVertices / 3, triangles.data());
}

/// The triangles that have no neighbour across some edge: none on a closed surface.
int countOpenTriangles(const znGeom::CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris)
{
    int open = 0;
    for (int triangle = 0; triangle < mesh.getNumTriangles(); ++triangle) {
        bool closed = true;
        for (int edge = 0; edge < 3 && closed; ++edge) {
            int neighbour, corner;
            closed = getSharedEdgeAdjacentTriangle(triangle, edge, mesh.getTriangles(), adjTris, neighbour, corner);
        }
        if (!closed) ++open;
    }
    return open;
}

} // namespace

int main()
{
    znGeom::CompactMesh mesh;
    makeLooseCube(mesh);
    std::printf("before: %d vertices, %d triangles\n", mesh.getNumVertices(), mesh.getNumTriangles());

    znUtil::Progress progress;
    znGeom::Remap remap;
    znGeom::meshCompact(mesh, progress, remap);
    std::printf("after:  %d vertices; old vertex 35 is now vertex %d\n", mesh.getNumVertices(), remap(35));

    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);

    int numHalfEdges = 0;
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        const int numNeighbours = adjVertices.numNeighbours(vertex);
        numHalfEdges += numNeighbours;
        std::printf("vertex %d: %d triangles, neighbours", vertex, adjTris.numTris(vertex));
        for (int i = 0; i < numNeighbours; ++i) std::printf(" %d", adjVertices.neighbours(vertex)[i]);
        std::printf("\n");
    }

    const int euler = mesh.getNumVertices() - numHalfEdges / 2 + mesh.getNumTriangles();
    const int open = countOpenTriangles(mesh, adjTris);
    std::printf("%d edges, Euler number %d, %d triangles with an open edge\n", numHalfEdges / 2, euler, open);
    return euler == 2 && open == 0 ? 0 : 1;
}
