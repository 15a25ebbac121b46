/// What the snippets of the pages may use besides the library; scripts/checks/snippets.py includes it.
#pragma once

#include <znGeom/znGeom.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

/// What a program would do with a value; here nothing.
template <typename... Values>
void use(const Values&...)
{}

template <typename... Values>
void show(const Values&...)
{}
inline void waitForClick() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

/// A square of 8 by 8 cells in the plane z = 0, two triangles each, from (0, 0) to (8, 8).
inline znGeom::CompactMesh grid()
{
    zn::vector<znGeom::MeshVertex> vertices;
    zn::vector<int> triangles;
    for (int row = 0; row <= 8; ++row)
        for (int column = 0; column <= 8; ++column) vertices.append({float(column), float(row), 0});
    for (int row = 0; row < 8; ++row)
        for (int column = 0; column < 8; ++column) {
            const int corner = 9 * row + column;
            for (const int step : {0, 1, 10, 0, 10, 9}) triangles.append(corner + step);
        }
    znGeom::CompactMesh mesh(vertices.size(), vertices.begin(), nullptr, nullptr, nullptr);
    mesh.copyTriangles(triangles.size() / 3, triangles.begin());
    return mesh;
}

inline znGeom::BoundingBox boxOf(const znGeom::CompactMesh& mesh)
{
    znGeom::BoundingBox box;
    znGeom::meshBoundingBox(mesh, box);
    return box;
}

/// The grid with its octree.
struct GridInSpace
{
    znGeom::CompactMesh mesh = grid();
    znGeom::Octree octree{mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), true, 16};
    znGeom::OctreeTris octreeTris;

    GridInSpace() { znGeom::computeOctreeTris(mesh, octree, octreeTris); }
};
