// Cuts a torus by parallel planes, joins what they cut to outlines, and adds their areas up to its volume.
#include <cmath>
#include <cstdio>
#include <numbers>

#include <znGeom/curves.h>
#include <znGeom/foundation.h>
#include <znGeom/planar.h>

namespace {

znGeom::CompactMesh torus(int around, int across, double major, double minor)
{
    znGeom::CompactMesh mesh;
    mesh.resizeVertexArray(around * across);
    mesh.resizeTriangleArray(2 * around * across);
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < across; ++j) {
            const double u = 2 * std::numbers::pi * i / around, v = 2 * std::numbers::pi * j / across;
            const double radius = major + minor * std::cos(v);
            mesh.getVertices()[i * across + j] = {static_cast<float>(radius * std::cos(u)),
                                                  static_cast<float>(radius * std::sin(u)),
                                                  static_cast<float>(minor * std::sin(v))};
            const int next = (i + 1) % around * across, here = i * across, up = (j + 1) % across;
            mesh.getTriangles()[2 * (here + j)] = {here + j, next + j, next + up};
            mesh.getTriangles()[2 * (here + j) + 1] = {here + j, next + up, here + up};
        }
    return mesh;
}

/// What a closed line runs round counter-clockwise, seen from above.
double areaInside(const znGeom::Polyline& line)
{
    double twice = 0;
    for (int i = 0; i + 1 < line.getNumVertices(); ++i) {
        const znLinear::Point &from = line.getVertex(i).point, &to = line.getVertex(i + 1).point;
        twice += from.x * to.y - from.y * to.x;
    }
    return twice / 2;
}

} // namespace

int main()
{
    const znGeom::CompactMesh mesh = torus(200, 100, 1, 0.4);
    const int numPlanes = 80;
    const double step = 0.8 / numPlanes;
    const znLinear::Plane lowest({0, 0, -0.4 + step / 2}, znLinear::Normal(0, 0, 1));

    int numOutlines = 0, numOpen = 0;
    double volume = 0;
    znUtil::Progress progress;
    znGeom::meshPlaneSections(
        mesh, lowest, step, numPlanes,
        [&](int, const std::deque<znGeom::Segment>& segments) {
            zn::vector<zn::Reference<znGeom::Polyline>> outlines;
            znGeom::MergeSegments()(outlines, segments, 1e-6f);
            for (const auto& outline : outlines) {
                ++numOutlines;
                if (!outline->getClosed()) ++numOpen;
                volume += step * areaInside(*outline);
            }
        },
        progress);

    const double exact = 2 * std::numbers::pi * std::numbers::pi * 0.4 * 0.4;
    std::printf("%d outlines, %d of them open; volume %.3f of %.3f\n", numOutlines, numOpen, volume, exact);
    return numOpen == 0 && std::fabs(volume - exact) < 0.01 * exact ? 0 : 1;
}
