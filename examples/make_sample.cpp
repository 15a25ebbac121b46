// Writes the sample that ./demo repairs: a closed shape as a scanner delivers it. Every triangle has three vertices of
// its own, places are noisy, there are holes and spikes, and some triangles are there twice or face inwards.
//
//   make_sample OUT.obj
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

namespace {

using znLinear::Point;
using znLinear::Vector;

/// A direction to a place on the shape: a ball with dents and bumps.
Point shapePoint(const Vector& direction)
{
    const znLinear::Normal n(direction);
    const double radius = 1 + 0.12 * std::sin(4 * n.dx + 1) * std::cos(3 * n.dy) + 0.08 * std::sin(5 * n.dz + 2 * n.dx);
    return Point() + n * radius;
}

/// The directions of a triangle on the sphere, split in four again and again.
void split(const Vector& a, const Vector& b, const Vector& c, int levels, std::vector<Vector>& corners)
{
    if (levels == 0) {
        corners.insert(corners.end(), {a, b, c});
        return;
    }
    const Vector ab = (a + b).normalized().asVector(), bc = (b + c).normalized().asVector(),
                 ca = (c + a).normalized().asVector();
    split(a, ab, ca, levels - 1, corners);
    split(ab, b, bc, levels - 1, corners);
    split(ca, bc, c, levels - 1, corners);
    split(ab, bc, ca, levels - 1, corners);
}

std::vector<Vector> makeDirections()
{
    constexpr int levels = 6;
    std::vector<Vector> corners;
    for (const double x : {1.0, -1.0})
        for (const double y : {1.0, -1.0})
            for (const double z : {1.0, -1.0}) {
                const Vector a(x, 0, 0), b(0, y, 0), c(0, 0, z);
                if (x * y * z > 0)
                    split(a, b, c, levels, corners);
                else
                    split(a, c, b, levels, corners);
            }
    return corners;
}

/// The same for every corner at the same place.
double noiseAt(const Vector& direction, unsigned salt)
{
    const auto quantized = [](double value) {
        return static_cast<std::uint64_t>(std::llround(value * 1e6) + 10000000);
    };
    std::mt19937_64 engine(quantized(direction.dx) * 1000003 + quantized(direction.dy) * 7919 +
                           quantized(direction.dz) * 31 + salt);
    return std::uniform_real_distribution<double>(-1, 1)(engine);
}

Point scannedPoint(const Vector& direction)
{
    const Vector noise(noiseAt(direction, 1), noiseAt(direction, 2), noiseAt(direction, 3));
    const bool isSpike = noiseAt(direction, 4) > 0.999;
    return Point() + (shapePoint(direction) - Point()) * (isSpike ? 1.3 : 1.0) + noise * 0.0012;
}

bool isInHole(const Vector& direction)
{
    const Vector holes[] = {{1, 0.3, 0.2}, {-0.4, 1, 0.5}, {0.2, -0.7, 1}, {-1, -0.6, -0.3}};
    double width = 0.06;
    for (const Vector& hole : holes)
        if (angle(znLinear::Normal(hole), znLinear::Normal(direction)) < (width += 0.03)) return true;
    return false;
}

/// One after the other, three corners each.
std::vector<Point> makeScan()
{
    const std::vector<Vector> directions = makeDirections();
    std::vector<Point> corners;
    for (size_t i = 0; i < directions.size(); i += 3) {
        if (isInHole(directions[i])) continue;
        const double luck = noiseAt(directions[i] + directions[i + 1] + directions[i + 2], 5);
        const bool isFlipped = luck > 0.98, isTwice = luck < -0.99;
        for (int copy = 0; copy < (isTwice ? 2 : 1); ++copy)
            for (const size_t corner : {i, isFlipped ? i + 2 : i + 1, isFlipped ? i + 1 : i + 2})
                corners.push_back(scannedPoint(directions[corner]));
    }
    return corners;
}

void makeMesh(const std::vector<Point>& corners, znGeom::CompactMesh& mesh)
{
    mesh.resizeVertexArray(static_cast<int>(corners.size()));
    mesh.resizeTriangleArray(static_cast<int>(corners.size() / 3));
    for (int i = 0; i < mesh.getNumVertices(); ++i) {
        mesh.getVertices()[i].set(&corners[static_cast<size_t>(i)].x);
        mesh.getTrianglesRaw()[i] = i;
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "make_sample OUT.obj\n");
        return 2;
    }
    znGeom::CompactMesh mesh;
    makeMesh(makeScan(), mesh);
    if (!znGeom::meshSave(mesh, znOS::Filename(argv[1]))) {
        std::fprintf(stderr, "make_sample: can't write %s\n", argv[1]);
        return 1;
    }
    std::printf("%s: %d triangles, %d vertices\n", argv[1], mesh.getNumTriangles(), mesh.getNumVertices());
}
