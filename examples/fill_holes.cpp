// Bites a piece out of a torus, and closes it in three ways: fill_holes [BITTEN.obj]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int around = 64, across = 32;

/// A waved tube that is bent to a ring, without the triangles inside a ball.
znGeom::CompactMesh makeBitten()
{
    const znLinear::Point bite(0, -1.25, 0.45);
    std::vector<znGeom::MeshVertex> vertices;
    std::vector<znGeom::MeshTriangle> triangles;
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const double a = 2 * M_PI * u / around, b = 2 * M_PI * v / across;
            const double tube = 0.4 + 0.03 * std::sin(5 * a), out = 1 + tube * std::cos(b);
            const double place[] = {out * std::cos(a), out * std::sin(a), tube * std::sin(b)};
            vertices.emplace_back().set(place);
        }
    const auto add = [&](int a, int b, int c) {
        if (distance(vertices[size_t(a)].asPoint(), bite) > 0.75) triangles.push_back({{a, b, c}});
    };
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const int next = (u + 1) % around * across, here = u * across, up = (v + 1) % across;
            add(here + v, next + v, next + up);
            add(here + v, next + up, here + up);
        }
    znGeom::CompactMesh mesh(int(vertices.size()), vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(int(triangles.size()), triangles.front().corners);
    return mesh;
}

/// \return whether all holes were closed
bool fill(znGeom::CompactMesh& mesh, znGeom::HoleQuality quality)
{
    znGeom::SimpleMeshCache cache;
    const zn::Reference<znGeom::MeshAdjTris> adjTris = cache.getAdjTris(mesh);
    const zn::Reference<znGeom::MeshAdjVertices> adjVertices = cache.getAdjVertices(mesh);
    const zn::Reference<znGeom::MeshBoundaries> boundaries = cache.getBoundaries(mesh);
    zn::list<int> holes;
    for (int i = 0; i < boundaries->size(); ++i) holes.append(i);
    znUtil::Progress progress;
    return znGeom::meshHoleFill(mesh, *adjTris, *adjVertices, *boundaries, holes, quality, progress) == holes.size();
}

} // namespace

int main(int argc, char** argv)
{
    const znGeom::CompactMesh bitten = makeBitten();
    if (argc > 1 && !znGeom::meshSave(bitten, znOS::Filename(argv[1]))) return 1;
    for (const auto quality : {znGeom::HoleTriangulated, znGeom::HoleRefined, znGeom::HoleFaired}) {
        znGeom::CompactMesh mesh(bitten);
        if (!fill(mesh, quality)) return 1;
        std::printf("quality %d: %d triangles more, volume %.4f\n", quality,
                    mesh.getNumTriangles() - bitten.getNumTriangles(), znGeom::meshVolume(mesh));
    }
}
