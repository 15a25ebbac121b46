// Breaks a torus in all ways that are repaired, asks what is wrong with it, and repairs it: repair [BROKEN.obj]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using znLinear::Point;
using znLinear::Vector;

constexpr int around = 80, across = 32;

/// What a mesh is made of, while it is being made.
struct Parts
{
    std::vector<znGeom::MeshVertex> vertices;
    std::vector<znGeom::MeshTriangle> triangles;

    int add(const Point& point)
    {
        vertices.emplace_back().set(&point.x);
        return int(vertices.size()) - 1;
    }
    Point at(int vertex) const { return vertices[size_t(vertex)].asPoint(); }
};

int gridVertex(int u, int v) { return (u + around) % around * across + (v + across) % across; }

/// A tube that is bent to a ring and waved a little.
Parts makeTorus()
{
    Parts parts;
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const double a = 2 * M_PI * u / around, b = 2 * M_PI * v / across;
            const double tube = 0.4 + 0.03 * std::sin(5 * a), out = 1 + tube * std::cos(b);
            parts.add({out * std::cos(a), out * std::sin(a), tube * std::sin(b) + 0.08 * std::sin(3 * a)});
        }
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const int a = gridVertex(u, v), b = gridVertex(u + 1, v), c = gridVertex(u + 1, v + 1),
                      d = gridVertex(u, v + 1);
            parts.triangles.push_back({{a, b, c}});
            parts.triangles.push_back({{a, c, d}});
        }
    return parts;
}

int triangleAt(int u, int v) { return 2 * gridVertex(u, v); }

/// Turns some triangles over, and says others twice.
void breakTriangles(Parts& parts)
{
    for (int u = 12; u < 18; ++u)
        for (int v = 4; v < 8; ++v)
            for (int i = 0; i < 2; ++i) {
                znGeom::MeshTriangle& triangle = parts.triangles[size_t(triangleAt(u, v) + i)];
                std::swap(triangle[1], triangle[2]);
            }
    for (int u = 63; u < 68; ++u) parts.triangles.push_back(parts.triangles[size_t(triangleAt(u, 6))]);
}

/// A row of triangles that stand on edges which have two already.
void addFin(Parts& parts)
{
    for (int u = 29; u < 35; ++u) {
        const int a = gridVertex(u, 6), b = gridVertex(u + 1, 6);
        const Point middle = parts.at(a) + (parts.at(b) - parts.at(a)) / 2;
        const int top = parts.add(middle + Vector(0, 0, 0.16));
        parts.triangles.push_back({{a, b, top}});
    }
}

/// A tetrahedron that touches the surface with one vertex.
void addTouchingPart(Parts& parts)
{
    const int touching = gridVertex(50, 7);
    const Point at = parts.at(touching);
    const int a = parts.add(at + Vector(0.12, 0, 0.25)), b = parts.add(at + Vector(-0.08, 0.1, 0.25)),
              c = parts.add(at + Vector(-0.08, -0.1, 0.25));
    for (const znGeom::MeshTriangle& triangle :
         {znGeom::MeshTriangle{{touching, b, a}}, {{touching, c, b}}, {{touching, a, c}}, {{a, b, c}}})
        parts.triangles.push_back(triangle);
}

/// Pulls a vertex through the other side of the ring.
void addSpike(Parts& parts)
{
    znGeom::MeshVertex& tip = parts.vertices[size_t(gridVertex(5, 15))];
    tip.set(-2.7f * tip.x, -2.7f * tip.y, tip.z);
}

void makeBroken(znGeom::CompactMesh& mesh)
{
    Parts parts = makeTorus();
    breakTriangles(parts);
    addFin(parts);
    addTouchingPart(parts);
    addSpike(parts);
    mesh = znGeom::CompactMesh(int(parts.vertices.size()), parts.vertices.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(int(parts.triangles.size()), parts.triangles.front().corners);
}

void tellWhatIsWrong(const znGeom::CompactMesh& mesh)
{
    znGeom::MeshCharacteristics characteristics(mesh);
    std::printf("%d triangles: %d bad, %d edges of three or more, %s, ", mesh.getNumTriangles(),
                characteristics.getNumBadTriangles(), characteristics.getNumNonManifoldEdges(),
                characteristics.checkOriented() ? "oriented" : "not oriented");
    characteristics.checkNonIntersecting();
    std::printf("%d that cross others\n", characteristics.getIntersectingTriangles().getNumSetBits());
}

} // namespace

int main(int argc, char** argv)
{
    znGeom::CompactMesh mesh;
    makeBroken(mesh);
    if (argc > 1 && !znGeom::meshSave(mesh, znOS::Filename(argv[1]))) return 1;
    tellWhatIsWrong(mesh);

    znGeom::MeshRepair repair(mesh);
    repair.checkSelfIntersection(true);
    int steps = 0;
    while (repair.repairOnce()) ++steps;
    std::printf("%d steps\n", steps);
    tellWhatIsWrong(mesh);
    return repair.needsRepair() ? 1 : 0;
}
