/// Surfaces to cut and flatten, and what must hold of both.
#pragma once

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/shapes.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/triangle_components.h"

namespace znTest {

/// The surface of cubes of side 1 that stand wherever a row of a pattern has a letter; each gap within is a handle.
inline znGeom::CompactMesh makeSlab(const std::vector<std::string>& pattern)
{
    const int rows = static_cast<int>(pattern.size()), columns = static_cast<int>(pattern[0].size());
    const auto stands = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < columns && y < rows &&
               pattern[static_cast<size_t>(y)][static_cast<size_t>(x)] != ' ';
    };
    const auto at = [&](int x, int y, int z) { return (y * (columns + 1) + x) * 2 + z; };
    zn::vector<znGeom::MeshVertex> vertices;
    for (int i = 0; i < (rows + 1) * (columns + 1) * 2; ++i)
        vertices.append({float(i / 2 % (columns + 1)), float(i / 2 / (columns + 1)), float(i % 2)});
    zn::vector<int> corners;
    const auto quad = [&](int a, int b, int c, int d) {
        for (const int corner : {a, b, c, a, c, d}) corners.append(corner);
    };
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x) {
            if (!stands(x, y)) continue;
            quad(at(x, y, 1), at(x + 1, y, 1), at(x + 1, y + 1, 1), at(x, y + 1, 1));
            quad(at(x, y, 0), at(x, y + 1, 0), at(x + 1, y + 1, 0), at(x + 1, y, 0));
            if (!stands(x, y - 1)) quad(at(x, y, 0), at(x + 1, y, 0), at(x + 1, y, 1), at(x, y, 1));
            if (!stands(x, y + 1)) quad(at(x + 1, y + 1, 0), at(x, y + 1, 0), at(x, y + 1, 1), at(x + 1, y + 1, 1));
            if (!stands(x - 1, y)) quad(at(x, y + 1, 0), at(x, y, 0), at(x, y, 1), at(x, y + 1, 1));
            if (!stands(x + 1, y)) quad(at(x + 1, y, 0), at(x + 1, y + 1, 0), at(x + 1, y + 1, 1), at(x + 1, y, 1));
        }
    znGeom::CompactMesh mesh;
    mesh.copyVertices(vertices.size(), vertices.data());
    mesh.copyTriangles(corners.size() / 3, corners.data());
    return mesh;
}

/// A grid whose places in the plane, x and y, are bent in space.
inline znGeom::CompactMesh bend(int columns, int rows, const std::function<znLinear::Point(double, double)>& place)
{
    znGeom::CompactMesh mesh = makeGrid(columns, rows);
    for (int i = 0; i < mesh.getNumVertices(); ++i) {
        const znLinear::Point p = place(i % columns, i / columns);
        mesh.getVertices()[i].set(float(p.x), float(p.y), float(p.z));
    }
    return mesh;
}

/// How a mesh hangs together, over the vertices that triangles use.
struct Topology
{
    int components, borders, shortestBorder = 1 << 30, characteristic;

    explicit Topology(const znGeom::CompactMesh& mesh)
    {
        znGeom::MeshAdjTris adjTris;
        znGeom::MeshAdjVertices adjVertices;
        znGeom::MeshBoundaries loops;
        meshAdjTris(mesh, adjTris);
        meshAdjVertices(mesh, adjTris, adjVertices);
        meshComputeBoundary(mesh, adjTris, adjVertices, loops);
        borders = loops.size();
        for (int i = 0; i < borders; ++i) shortestBorder = std::min(shortestBorder, loops.getLength(i));
        znGeom::MeshEdgeSides edges;
        meshEdgeSides(mesh, edges);
        znGeom::MeshTriangleComponents parts;
        meshEdgeComponents(mesh, edges, parts);
        components = parts.count();
        characteristic = mesh.getNumTriangles() - edges.getNumEdges();
        for (int i = 0; i < mesh.getNumVertices(); ++i) characteristic += adjTris.numTris(i) > 0;
    }
    /// Whether each component is a disk, possibly with holes.
    bool isDisks() const
    {
        return borders >= components && characteristic == 2 * components - borders && shortestBorder >= 3;
    }
};

} // namespace znTest
