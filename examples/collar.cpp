// Cuts a pipe open lengthwise, and stands a collar on its border: collar [STRIP.obj]
#include <znGeom/znGeom.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int around = 33, along = 21;

/// Half a pipe of radius 2 about the x axis.
znGeom::CompactMesh makeHalfPipe()
{
    std::vector<znGeom::MeshVertex> vertices;
    std::vector<znGeom::MeshTriangle> triangles;
    for (int row = 0; row < along; ++row)
        for (int column = 0; column < around; ++column) {
            const double angle = M_PI * column / (around - 1);
            const double place[] = {0.25 * row, -2 * std::cos(angle), 2 * std::sin(angle)};
            vertices.emplace_back().set(place);
            if (row == 0 || column == 0) continue;
            const int here = row * around + column, left = here - 1, below = here - around;
            triangles.push_back({{below - 1, here, left}});
            triangles.push_back({{below - 1, below, here}});
        }
    znGeom::CompactMesh mesh(int(vertices.size()), vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(int(triangles.size()), triangles.front().corners);
    return mesh;
}

} // namespace

int main(int argc, char** argv)
{
    const znGeom::CompactMesh pipe = makeHalfPipe();
    znGeom::SimpleMeshCache cache;
    const zn::Reference<znGeom::MeshAdjTris> adjTris = cache.getAdjTris(pipe);
    const zn::Reference<znGeom::MeshBoundaries> boundaries = cache.getBoundaries(pipe);
    const auto placeOf = [&](int vertex) {
        znGeom::MeshCoord place;
        place.triangle = adjTris->triIndices(vertex)[0];
        place.weights[znGeom::cornerOf(pipe.getTriangles()[place.triangle], vertex)] = 1;
        return place;
    };

    const znGeom::MeshCollar collar(pipe, *adjTris, *boundaries);
    const znGeom::MeshCoord from = placeOf(0), to = placeOf(around * (along - 1)); // along the cut, which is straight
    const double one = collar.getDistance(from, to, 0, true), other = collar.getDistance(from, to, 0, false);
    znGeom::MeshCollar::Params params;
    params.usePathPoints = false;
    params.computeCurvature = true;
    zn::vector<znGeom::MeshCollar::Point> points;
    collar.getPoints(from, to, params, 0, one < other, points);
    if (points.size() != along) return 1;
    const znGeom::MeshCollar::Point& middle = points[along / 2];
    std::printf("the cut is %g long, the way round %g; the radius across is %.3f\n", std::min(one, other),
                std::max(one, other), 1 / middle.curvature);

    znGeom::CompactMesh strip;
    znGeom::meshCollarRibbon(points, 0.5, false, strip);
    if (argc > 1 && !znGeom::meshSave(strip, znOS::Filename(argv[1]))) return 1;
    return znGeom::meshCollarTurnedQuads(points, 0.5, false) == 0 ? 0 : 1;
}
