// Cuts holes into a knot and draws it, each triangle coloured by its steps from the nearest hole: draw_surface
// OUTPUT.svg
#include <znGeom/znGeom.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using znLinear::Point;
using znLinear::Vector;

constexpr int around = 168, across = 16;

/// A point of the trefoil knot.
Point knotAt(double t)
{
    return {std::sin(t) + 2 * std::sin(2 * t), std::cos(t) - 2 * std::cos(2 * t), -1.2 * std::sin(3 * t)};
}

/// The tube about the knot, turned towards the viewer, three vertices for each triangle.
void makeKnot(znGeom::CompactMesh& mesh)
{
    std::vector<znGeom::MeshVertex> ring;
    const znLinear::Normal tilt = Vector(1, 0.35, 0).normalized();
    for (int i = 0; i < around; ++i) {
        const double t = 2 * M_PI * i / around;
        const Point centre = knotAt(t);
        const znLinear::Normal along = knotAt(t + 0.01) - knotAt(t - 0.01);
        const znLinear::Normal side = cross(along.asVector(), centre.asVector() + Vector(0, 0, 3));
        const znLinear::Normal up = cross(along, side);
        for (int j = 0; j < across; ++j) {
            const double a = 2 * M_PI * j / across;
            const Point p = centre + (side * std::cos(a) + up * std::sin(a)) * 0.62;
            const Vector turned = rotate(p.asVector(), tilt, -0.5);
            ring.emplace_back().set(&turned.dx);
        }
    }
    std::vector<znGeom::MeshVertex> corners;
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < across; ++j) {
            const auto at = [&](int u, int v) { return ring[size_t((i + u) % around * across + (j + v) % across)]; };
            for (const auto& corner : {at(0, 0), at(1, 1), at(1, 0), at(0, 0), at(0, 1), at(1, 1)})
                corners.push_back(corner);
        }
    std::vector<int> triangles(corners.size());
    for (size_t i = 0; i < triangles.size(); ++i) triangles[i] = int(i);
    mesh = znGeom::CompactMesh(int(corners.size()), corners.data(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(int(triangles.size() / 3), triangles.data());
}

/// Of the triangles around one place of the tube the one nearest to the viewer.
int frontAt(const znGeom::CompactMesh& mesh, double place)
{
    const int first = 2 * across * int(place * around);
    int front = first;
    const auto height = [&mesh](int triangle) { return mesh.getVertices()[mesh.getTriangles()[triangle][0]].z; };
    for (int i = first; i < first + 2 * across; ++i)
        if (height(i) > height(front)) front = i;
    return front;
}

/// Deletes some rings of triangles around a few places.
void cutHoles(znGeom::CompactMesh& mesh)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::MeshSelect select(mesh, adjTris);
    select.getSelectedTriangles().resize(mesh.getNumTriangles());
    for (const double place : {0.14, 0.475, 0.80}) select.getSelectedTriangles().setBit(frontAt(mesh, place));
    for (int ring = 0; ring < 2; ++ring) select.selectTrianglesRecursive(true);
    select.selectVerticesFromTriangles();
    znGeom::MeshDeleteSelected deleteSelected(mesh);
    deleteSelected();
}

/// For each triangle the number of steps over vertices from the border.
std::vector<int> stepsFromBorder(const znGeom::CompactMesh& mesh, const znGeom::MeshAdjTris& adjTris,
                                 const znGeom::MeshBoundaries& borders)
{
    znGeom::BitVector triangles, vertices;
    znGeom::MeshSelect select(mesh, adjTris, triangles, vertices);
    vertices.resize(mesh.getNumVertices());
    for (int loop = 0; loop < borders.size(); ++loop) vertices.setBits(borders.getLength(loop), borders.getStart(loop));
    select.selectAllTrianglesFromVertices();

    std::vector<int> steps(size_t(mesh.getNumTriangles()), -1);
    for (int step = 0, left = mesh.getNumTriangles(); left > 0; ++step, select.selectTrianglesRecursive(true)) {
        const int before = left;
        for (int triangle = 0; triangle < mesh.getNumTriangles(); ++triangle)
            if (steps[size_t(triangle)] < 0 && triangles.isSet(triangle)) steps[size_t(triangle)] = step, --left;
        if (left == before) break;
    }
    return steps;
}

struct Shape
{
    double depth;
    std::string path;
};

std::string place(const Point& p)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.0f %.0f", 400 + 104 * p.x, 372 - 104 * p.y);
    return text;
}

/// From warm at the holes to cool far away; darker where light falls flat, paler inside the tube.
std::string colourOf(double far, double light)
{
    static const double stops[][3] = {{250, 216, 120}, {243, 146, 80}, {200, 70, 110}, {110, 60, 150}, {45, 55, 120}};
    const double at = std::clamp(far, 0.0, 1.0) * 3.999, part = at - std::floor(at);
    const bool inside = light < 0;
    const double shade = inside ? 0.55 + 0.35 * light : 0.5 + 0.58 * light;
    int rgb[3];
    for (int c = 0; c < 3; ++c) {
        const double* low = stops[int(at)];
        const double colour = inside ? 190 : (1 - part) * low[c] + part * (low + 3)[c];
        rgb[c] = int(std::clamp(colour * shade, 0.0, 255.0));
    }
    char text[16];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", unsigned(rgb[0]), unsigned(rgb[1]), unsigned(rgb[2]));
    return text;
}

void drawTriangles(const znGeom::CompactMesh& mesh, const std::vector<int>& steps, std::vector<Shape>& shapes)
{
    const double most = *std::max_element(steps.begin(), steps.end());
    const znLinear::Normal lamp = Vector(-0.25, 0.35, 0.9).normalized();
    for (int i = 0; i < mesh.getNumTriangles(); ++i) {
        const znGeom::MeshTriangle& t = mesh.getTriangles()[i];
        const Point a = mesh.getVertices()[t[0]].asPoint(), b = mesh.getVertices()[t[1]].asPoint(),
                    c = mesh.getVertices()[t[2]].asPoint();
        const znLinear::Normal normal = cross(b - a, c - a);
        if (normal.dz < 0 && steps[size_t(i)] > 11) continue; // the inside is seen through the holes alone
        const double light = normal.dz > 0 ? std::max(dot(normal, lamp), 0.0) : std::min(dot(normal, lamp), -0.01);
        const std::string colour = colourOf(steps[size_t(i)] / most, light);
        shapes.push_back({(a.z + b.z + c.z) / 3, "<path fill='" + colour + "' stroke='" + colour + "' d='M" + place(a) +
                                                     "L" + place(b) + " " + place(c) + "z'/>\n"});
    }
}

/// The edges of a border, each in front of the triangle that it belongs to.
void drawBorder(const znGeom::CompactMesh& mesh, const znGeom::MeshBoundaries& borders, int loop,
                std::vector<Shape>& shapes)
{
    const int* vertices = borders.getStart(loop);
    const int length = borders.getLength(loop);
    for (int i = 0; i < length; ++i) {
        const Point a = mesh.getVertices()[vertices[i]].asPoint(),
                    b = mesh.getVertices()[vertices[(i + 1) % length]].asPoint();
        shapes.push_back({std::max(a.z, b.z) + 0.12,
                          "<path stroke='#1f2933' stroke-width='3' d='M" + place(a) + "L" + place(b) + "'/>\n"});
    }
}

bool write(const char* file, std::vector<Shape>& shapes)
{
    std::stable_sort(shapes.begin(), shapes.end(), [](const Shape& a, const Shape& b) { return a.depth < b.depth; });
    std::FILE* svg = std::fopen(file, "w");
    if (!svg) return false;
    std::fputs("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 800 760' stroke-linejoin='round' "
               "stroke-linecap='round'>\n<rect width='800' height='760' fill='white'/>\n",
               svg);
    for (const Shape& shape : shapes) std::fputs(shape.path.c_str(), svg);
    std::fputs("</svg>\n", svg);
    return std::fclose(svg) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    znGeom::CompactMesh mesh;
    makeKnot(mesh);
    znUtil::Progress progress;
    znGeom::meshCompact(mesh, progress);
    cutHoles(mesh);

    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::MeshBoundaries borders;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);
    znGeom::meshComputeBoundary(mesh, adjTris, adjVertices, borders);

    std::vector<Shape> shapes;
    drawTriangles(mesh, stepsFromBorder(mesh, adjTris, borders), shapes);
    for (int loop = 0; loop < borders.size(); ++loop) drawBorder(mesh, borders, loop, shapes);
    if (!write(argc > 1 ? argv[1] : "surface.svg", shapes)) return 1;
    std::printf("%d triangles, %d holes\n", mesh.getNumTriangles(), borders.size());
    return borders.size() == 3 ? 0 : 1;
}
