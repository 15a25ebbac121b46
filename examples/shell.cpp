// Makes a bowl of a given thickness, and tells how much fits between its sides: shell [BOWL.obj]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <memory>

namespace {

constexpr int around = 120, rings = 40;

/// The lower half of a ball of radius 1, with eight folds, open at the top; it faces outward.
znGeom::CompactMesh makeBowl()
{
    zn::vector<znGeom::MeshVertex> vertices;
    zn::vector<int> corners;
    vertices.append({0, 0, -1});
    for (int ring = 1; ring <= rings; ++ring)
        for (int step = 0; step < around; ++step) {
            const double down = M_PI / 2 * ring / rings, turn = 2 * M_PI * step / around;
            const double out = std::sin(down) * (1 + 0.2 * std::sin(down) * std::cos(8 * turn));
            vertices.append({float(out * std::cos(turn)), float(out * std::sin(turn)), float(-std::cos(down))});
        }
    for (int step = 0; step < around; ++step) {
        const int next = (step + 1) % around;
        for (const int corner : {0, 1 + next, 1 + step}) corners.append(corner);
        for (int first = 1; first < 1 + around * (rings - 1); first += around) {
            const int below = first + step, above = below + around;
            for (const int corner : {below, first + next, above, first + next, first + next + around, above})
                corners.append(corner);
        }
    }
    znGeom::CompactMesh mesh(vertices.size(), vertices.begin(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(corners.size() / 3, corners.begin());
    return mesh;
}

} // namespace

int main(int argc, char** argv)
{
    const znGeom::CompactMesh bowl = makeBowl();
    znGeom::SimpleMeshCache cache;
    const zn::Reference<znGeom::MeshAdjTris> adjTris = cache.getAdjTris(bowl);
    const zn::Reference<znGeom::MeshBoundaries> boundaries = cache.getBoundaries(bowl);
    const zn::Reference<znGeom::Octree> octree = cache.getOctree(bowl, 16);
    for (const double thickness : {0.02, 0.1, 0.3}) {
        znGeom::MeshOffset offset(bowl, *octree, *boundaries, *adjTris, thickness);
        const std::unique_ptr<znGeom::CompactMesh> shell(offset.calculate(true));
        const znGeom::MeshOffsetPruning& pruned = offset.pruning();
        std::printf("%.2f thick: volume %.4f, %d vertices were too close, %d turned over\n", thickness,
                    znGeom::meshVolume(*shell), pruned.tooClose, pruned.turned);
        if (!(znGeom::meshVolume(*shell) > 0)) return 1;
        if (argc > 1 && !znGeom::meshSave(*shell, znOS::Filename(argv[1]))) return 1;
    }
}
