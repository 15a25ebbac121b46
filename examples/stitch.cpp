// Sews two tubes of unlike meshes together, one of them inside out: stitch [SEWN.obj]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

/// Adds a waved tube about the z axis, open at both ends; inside out where the first height is the larger one.
void addTube(std::vector<znGeom::MeshVertex>& vertices, std::vector<znGeom::MeshTriangle>& triangles, int around,
             double from, double to)
{
    constexpr int rows = 8;
    const int first = int(vertices.size());
    for (int row = 0; row <= rows; ++row)
        for (int i = 0; i < around; ++i) {
            const double angle = 2 * M_PI * i / around, radius = 1 + 0.2 * std::sin(3 * angle);
            const double place[] = {radius * std::cos(angle), radius * std::sin(angle),
                                    from + (to - from) * row / rows};
            vertices.emplace_back().set(place);
        }
    for (int row = 0; row < rows; ++row)
        for (int i = 0; i < around; ++i) {
            const int here = first + row * around, next = (i + 1) % around;
            triangles.push_back({{here + i, here + next, here + around + next}});
            triangles.push_back({{here + i, here + around + next, here + around + i}});
        }
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<znGeom::MeshVertex> vertices;
    std::vector<znGeom::MeshTriangle> triangles;
    addTube(vertices, triangles, 60, 0, 1);
    addTube(vertices, triangles, 43, 2, 1.02);
    znGeom::CompactMesh mesh(int(vertices.size()), vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(int(triangles.size()), triangles.front().corners);

    znGeom::SimpleMeshCache cache;
    const zn::Reference<znGeom::MeshBoundaries> boundaries = cache.getBoundaries(mesh);
    zn::vector<int> all;
    for (int i = 0; i < boundaries->size(); ++i) all.append(i);
    znGeom::MeshStitchAccount account;
    if (!znGeom::meshStitch(mesh, cache.getAdjTris(mesh), boundaries, all, 0.1, 0.05, &account)) return 1;
    for (const znGeom::MeshStitchPair& pair : account.pairs)
        std::printf("sewed loop %d to loop %d along %.3f\n", pair.loop, pair.otherLoop, pair.length);
    std::printf("turned %d shells over\n", account.turned.size());
    std::printf("%d boundaries, then %d\n", boundaries->size(), cache.getBoundaries(mesh)->size());
    if (argc > 1 && !znGeom::meshSave(mesh, znOS::Filename(argv[1]))) return 1;
    return cache.getBoundaries(mesh)->size() == 2 ? 0 : 1;
}
