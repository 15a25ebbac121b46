// Writes the sample that ./demo shows: a torus with waves, on which every triangle has three vertices of its own.
//
//   make_sample OUT.obj
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <numbers>

namespace {

constexpr int turnSteps = 160, tubeSteps = 64;

/// \param turn  angle around the axis of the torus, radians
/// \param tube  angle around the tube, radians
znLinear::Point surfacePoint(double turn, double tube)
{
    const double radius = 0.38 + 0.05 * std::sin(8 * turn + 3 * tube);
    const double fromAxis = 1 + radius * std::cos(tube);
    return {fromAxis * std::cos(turn), fromAxis * std::sin(turn), radius * std::sin(tube)};
}

znLinear::Normal surfaceNormal(double turn, double tube)
{
    const double step = 1e-4;
    const auto alongTurn = surfacePoint(turn + step, tube) - surfacePoint(turn - step, tube);
    const auto alongTube = surfacePoint(turn, tube + step) - surfacePoint(turn, tube - step);
    return cross(alongTurn, alongTube).normalized();
}

/// Sets one vertex from its place on the grid. A place beyond the end is the one at the start, bit for bit.
void setVertex(znGeom::CompactMesh& mesh, int vertex, int turnStep, int tubeStep)
{
    const double turn = 2 * std::numbers::pi * (turnStep % turnSteps) / turnSteps;
    const double tube = 2 * std::numbers::pi * (tubeStep % tubeSteps) / tubeSteps;
    const znLinear::Point point = surfacePoint(turn, tube);
    mesh.getVertices()[vertex].set(float(point.x), float(point.y), float(point.z));
    mesh.getNormals()[vertex] = surfaceNormal(turn, tube);
}

void makeWavyTorus(znGeom::CompactMesh& mesh)
{
    // The corners of the two triangles of a grid cell, as steps along turn and tube.
    constexpr int corners[6][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    const int numVertices = 6 * turnSteps * tubeSteps;
    znGeom::MeshModification modification(&mesh, znGeom::MeshModification::TopologyChanged);

    mesh.resizeVertexArray(numVertices);
    mesh.allocNormalArray();
    mesh.resizeTriangleArray(numVertices / 3);
    for (int vertex = 0; vertex < numVertices; ++vertex) {
        const int cell = vertex / 6;
        const auto& corner = corners[vertex % 6];
        setVertex(mesh, vertex, cell / tubeSteps + corner[0], cell % tubeSteps + corner[1]);
        mesh.getTrianglesRaw()[vertex] = vertex;
    }

    modification.normalsModified();
    mesh.modified(modification);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "make_sample OUT.obj\n");
        return 2;
    }
    znGeom::CompactMesh mesh;
    makeWavyTorus(mesh);
    if (!znGeom::meshWriteObj(mesh, znOS::Filename(argv[1]))) {
        std::fprintf(stderr, "make_sample: can't write %s\n", argv[1]);
        return 1;
    }
    std::printf("%s: %d triangles, %d vertices\n", argv[1], mesh.getNumTriangles(), mesh.getNumVertices());
}
