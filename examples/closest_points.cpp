// Finds the points of a surface that are nearest to other points, by way of an octree.
#include <znGeom/znGeom.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

/// A torus about the z axis: its tube of radius 1 runs 2 away from the axis.
void makeTorus(znGeom::CompactMesh& mesh, int around, int across)
{
    std::vector<znGeom::MeshVertex> vertices;
    std::vector<int> triangles;
    const auto vertex = [=](int i, int j) { return (i % around) * across + j % across; };
    for (int i = 0; i < around; ++i) {
        for (int j = 0; j < across; ++j) {
            const double a = 2 * M_PI * i / around, b = 2 * M_PI * j / across, r = 2 + std::cos(b);
            vertices.push_back({float(r * std::cos(a)), float(r * std::sin(a)), float(std::sin(b))});
            for (const int corner : {vertex(i, j), vertex(i + 1, j), vertex(i + 1, j + 1), vertex(i, j),
                                     vertex(i + 1, j + 1), vertex(i, j + 1)})
                triangles.push_back(corner);
        }
    }
    mesh = znGeom::CompactMesh(around * across, vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(2 * around * across, triangles.data());
}

} // namespace

int main()
{
    znGeom::CompactMesh mesh;
    makeTorus(mesh, 300, 150);

    // Derived objects are asked for by mesh; the cache forgets them when the mesh reports a change.
    znGeom::SimpleMeshCache cache;
    const auto octree = cache.getOctree(mesh, 16);
    const auto octreeTris = cache.getOctreeTris(mesh);
    std::printf("%d triangles in %d leaves\n", mesh.getNumTriangles(), octree->numLeaves());

    // One of these per thread. The distance to the true torus is known, which shows how far the triangles are off.
    znGeom::MeshClosestPoint closest(mesh, *octree, *octreeTris);
    double worst = 0;
    for (int i = 0; i < 1000; ++i) {
        const znLinear::Point p(3.5 * std::cos(i), 3.5 * std::sin(i), std::sin(0.1 * i));
        znGeom::MeshCoord place;
        const double distance = closest.compute(p, &place);
        const double exact = std::fabs(std::hypot(std::hypot(p.x, p.y) - 2, p.z) - 1);
        worst = std::max(worst, std::fabs(distance - exact));
        if (i == 0) {
            const znLinear::Point q = place.evaluate(mesh.getVertices(), mesh.getTriangles());
            std::printf("nearest to (%g, %g, %g): (%g, %g, %g) in triangle %d, %g away\n", p.x, p.y, p.z, q.x, q.y, q.z,
                        place.triangle, distance);
        }
    }
    std::printf("1000 queries, at most %g from the true torus\n", worst);
    return worst < 0.001 ? 0 : 1;
}
