#include "tests/support/shapes.h"

#include <cmath>
#include <numbers>

#include "tests/support/random.h"

namespace znTest {

using namespace znGeom;
using znLinear::Point;

namespace {

/// Vertices and triangles as they grow.
struct Builder
{
    zn::vector<MeshVertex> vertices;
    zn::vector<int> corners;

    int vertex(double x, double y, double z)
    {
        vertices.append(MeshVertex{float(x), float(y), float(z)});
        return vertices.size() - 1;
    }
    void triangle(int a, int b, int c)
    {
        for (const int corner : {a, b, c}) corners.append(corner);
    }
    /// The four corners of a cell in turn.
    void quad(int a, int b, int c, int d)
    {
        triangle(a, b, c);
        triangle(a, c, d);
    }
    void publish(CompactMesh& mesh) const
    {
        mesh = CompactMesh();
        mesh.copyVertices(vertices.size(), vertices.data());
        mesh.copyTriangles(corners.size() / 3, corners.data());
    }
};

double turn(int part, int parts) { return 2 * std::numbers::pi * part / parts; }

void splitInFour(Builder& sphere)
{
    zn::map<std::pair<int, int>, int> midpoints;
    const auto midpoint = [&](int a, int b) {
        const auto [node, isNew] = midpoints.insertNodeUnique(std::minmax({a, b}), sphere.vertices.size());
        if (isNew) {
            const Point p = combine(sphere.vertices[a].asPoint(), sphere.vertices[b].asPoint());
            const double scale = 1.0 / p.asVector().length();
            sphere.vertex(p.x * scale, p.y * scale, p.z * scale);
        }
        return node.value().second;
    };
    const zn::vector<int> old = sphere.corners;
    sphere.corners.clear();
    for (int t = 0; t < old.size(); t += 3) {
        const int a = old[t], b = old[t + 1], c = old[t + 2];
        const int ab = midpoint(a, b), bc = midpoint(b, c), ca = midpoint(c, a);
        sphere.triangle(a, ab, ca), sphere.triangle(b, bc, ab), sphere.triangle(c, ca, bc), sphere.triangle(ab, bc, ca);
    }
}

} // namespace

void makeGrid(CompactMesh& mesh, int columns, int rows)
{
    Builder grid;
    for (int i = 0; i < columns * rows; ++i) grid.vertex(i % columns, i / columns, 0);
    for (int row = 0; row + 1 < rows; ++row)
        for (int column = 0; column + 1 < columns; ++column) {
            const int at = row * columns + column;
            grid.quad(at, at + 1, at + columns + 1, at + columns);
        }
    grid.publish(mesh);
}

void makeCube(CompactMesh& mesh)
{
    Builder cube;
    for (int i = 0; i < 8; ++i) cube.vertex(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1);
    cube.quad(0, 2, 3, 1), cube.quad(4, 5, 7, 6), cube.quad(0, 1, 5, 4);
    cube.quad(2, 6, 7, 3), cube.quad(0, 4, 6, 2), cube.quad(1, 3, 7, 5);
    cube.publish(mesh);
}

void makeSphere(CompactMesh& mesh, int levels, double radius)
{
    Builder sphere;
    for (int axis = 0; axis < 3; ++axis)
        for (const int sign : {1, -1}) sphere.vertex(axis == 0 ? sign : 0, axis == 1 ? sign : 0, axis == 2 ? sign : 0);
    for (const auto& [x, y] : {std::pair(0, 2), std::pair(2, 1), std::pair(1, 3), std::pair(3, 0)})
        sphere.triangle(x, y, 4), sphere.triangle(y, x, 5);
    for (int level = 0; level < levels; ++level) splitInFour(sphere);
    const float scale = float(radius);
    for (MeshVertex& v : sphere.vertices) v.set(v.x * scale, v.y * scale, v.z * scale);
    sphere.publish(mesh);
}

void makeTorus(CompactMesh& mesh, int around, int across, double major, double minor)
{
    Builder torus;
    for (int i = 0; i < around * across; ++i) {
        const double u = turn(i / across, around), v = turn(i % across, across);
        const double distance = major + minor * std::cos(v);
        torus.vertex(distance * std::cos(u), distance * std::sin(u), minor * std::sin(v));
    }
    const auto at = [=](int u, int v) { return u % around * across + v % across; };
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) torus.quad(at(u, v), at(u + 1, v), at(u + 1, v + 1), at(u, v + 1));
    torus.publish(mesh);
}

void makeMobiusBand(CompactMesh& mesh, int segments)
{
    Builder band;
    for (int i = 0; i < segments; ++i)
        for (const double side : {-0.3, 0.3}) {
            const double u = turn(i, segments), distance = 1 + side * std::cos(u / 2);
            band.vertex(distance * std::cos(u), distance * std::sin(u), side * std::sin(u / 2));
        }
    for (int i = 0; i + 1 < segments; ++i) band.quad(2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1);
    band.quad(2 * segments - 2, 1, 0, 2 * segments - 1);
    band.publish(mesh);
}

void makeAnnulus(CompactMesh& mesh, int segments, double inner, double outer)
{
    Builder ring;
    for (int i = 0; i < segments; ++i)
        for (const double radius : {inner, outer})
            ring.vertex(radius * std::cos(turn(i, segments)), radius * std::sin(turn(i, segments)), 0);
    for (int i = 0; i < segments; ++i) {
        const int next = (i + 1) % segments;
        ring.quad(2 * i, 2 * i + 1, 2 * next + 1, 2 * next);
    }
    ring.publish(mesh);
}

void makeSoup(CompactMesh& mesh, const CompactMesh& source)
{
    Builder soup;
    for (int i = 0; i < 3 * source.getNumTriangles(); ++i) {
        soup.vertices.append(source.getVertices()[source.getTrianglesRaw()[i]]);
        soup.corners.append(i);
    }
    soup.publish(mesh);
}

void makeNoisyScan(CompactMesh& mesh, int columns, int rows, std::uint64_t seed)
{
    Random random(seed);
    CompactMesh sheet;
    makeGrid(sheet, columns, rows);
    Builder scan;
    for (int i = 0; i < sheet.getNumVertices(); ++i) {
        const MeshVertex v = sheet.getVertices()[i];
        const double wave = std::sin(0.3 * double(v.x)) * std::cos(0.2 * double(v.y));
        scan.vertex(double(v.x), double(v.y), wave + random.real(-0.02, 0.02));
    }
    bool missing = false;
    for (int t = 0; t < sheet.getNumTriangles(); ++t) {
        if (t % 2 == 0) missing = random.oneIn(missing ? 2 : 30);
        if (missing) continue;
        const MeshTriangle& corners = sheet.getTriangles()[t];
        const MeshVertex first = scan.vertices[corners[0]];
        const bool copied = random.oneIn(10);
        if (copied) scan.vertices.append(first);
        scan.triangle(copied ? scan.vertices.size() - 1 : corners[0], corners[1], corners[2]);
    }
    for (int i = 0; i < 3; ++i) scan.vertex(random.real(), random.real(), 5);
    scan.publish(mesh);
}

} // namespace znTest
