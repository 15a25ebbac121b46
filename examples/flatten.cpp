// Cuts a torus open, lays it flat and writes it with its texture coordinates: flatten [FLAT.obj]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>

namespace {

constexpr int around = 96, across = 36;

/// A tube that is bent to a ring, thicker on one side.
znGeom::CompactMesh makeTorus()
{
    zn::vector<znGeom::MeshVertex> vertices;
    zn::vector<int> corners;
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const double a = 2 * M_PI * u / around, b = 2 * M_PI * v / across;
            const double tube = 0.4 + 0.12 * std::cos(a), out = 1 + tube * std::cos(b);
            vertices.appendAndReturnPtr()->set(float(out * std::cos(a)), float(out * std::sin(a)),
                                               float(tube * std::sin(b)));
        }
    const auto at = [](int u, int v) { return u % around * across + v % across; };
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v)
            for (const int corner :
                 {at(u, v), at(u + 1, v), at(u + 1, v + 1), at(u, v), at(u + 1, v + 1), at(u, v + 1)})
                corners.append(corner);
    znGeom::CompactMesh mesh(vertices.size(), vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(corners.size() / 3, corners.data());
    return mesh;
}

} // namespace

int main(int argc, char** argv)
{
    const znGeom::CompactMesh torus = makeTorus();

    // Along the cut the copy has vertices for either side: they lie where the old ones do, and must stay apart.
    znGeom::CompactMesh opened = torus;
    znUtil::Progress progress;
    zn::vector<int> originals;
    if (!znGeom::cutSurface::makeDisk(opened, originals, progress)) return 1;
    znGeom::reparameterizeMesh flattening(opened);
    flattening.enableMeshWelding(false);
    if (!flattening.flatten()) return 1;

    // The torus itself gets coordinates at the corners of its triangles.
    zn::vector<znGeom::MeshUV> corners;
    for (int i = 0; i < 3 * opened.getNumTriangles(); ++i) corners.append(opened.getUVs()[opened.getTrianglesRaw()[i]]);
    const znGeom::MeshUVDistortion distortion = znGeom::meshUVDistortion(torus, corners.data());
    std::printf("%d vertices doubled along a seam of length %.2f\n", originals.size(), distortion.seamLength);
    std::printf("%d triangles turned over, stretch %.3f in the mean and %.3f at most\n", distortion.numFlipped,
                distortion.meanStretch, distortion.largestStretch);

    znGeom::MeshSaveOptions options;
    options.cornerUVs = corners.data();
    if (argc > 1 && !znGeom::meshSave(torus, znOS::Filename(argv[1]), options, progress)) return 1;
    return distortion.numFlipped == 0 ? 0 : 1;
}
