/// What a right result looks like, worked out by brute force from the arrays, with no library in between.
#pragma once

#include "bench/generate.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

/// A relation between indices, as its number of pairs and a sum that does not depend on their order.
struct RelationSum
{
    std::uint64_t pairs = 0;
    std::uint64_t sum = 0;

    void add(std::int64_t from, std::int64_t to)
    {
        ++pairs;
        sum += (static_cast<std::uint64_t>(from) + 1) * (static_cast<std::uint64_t>(to) + 7);
    }
    bool operator==(const RelationSum&) const = default;
};

/// Each vertex with each triangle that has it as a corner, corner by corner.
RelationSum vertexTriangles(const Soup& soup);
/// Each vertex with each other vertex that an edge joins it to, once.
RelationSum vertexNeighbours(const Soup& soup);
/// Each triangle with each other triangle across each of its edges.
RelationSum triangleNeighbours(const Soup& soup);

/// The number of different positions.
int distinctPositions(const Soup& soup);

double areaOf(const Soup& soup);
/// The number of parts of a mesh that share no vertex.
int components(const Soup& soup);
/// The number of vertices on edges that belong to only one triangle.
int borderVertices(const Soup& soup);

/// Whether no two triangles, three indices each, run along an edge in the same direction.
bool isConsistentlyWound(const std::vector<int>& triangles);

/// Whether vertex normals, three floats each, are the directions of the sums of the unit normals around the vertices,
/// except at one vertex in a thousand: where sums almost cancel out, each library gives something else.
bool areVertexNormals(const Soup& soup, const float* normals);

/// The distances from points, three floats each, to the surface.
std::vector<double> distancesTo(const Soup& soup, const std::vector<float>& points);

/// True when `triangles`, taken in order, have corners where those of `soup` are, within a relative `tolerance`
/// of the largest coordinate.
template <class Position>
bool sameCorners(const Soup& soup, int numTriangles, double tolerance, Position&& position)
{
    if (numTriangles != soup.numTriangles()) return false;
    double largest = 0;
    for (const float value : soup.positions) {
        const double size = value < 0 ? -static_cast<double>(value) : static_cast<double>(value);
        if (size > largest) largest = size;
    }
    for (std::size_t corner = 0; corner < soup.triangles.size(); ++corner) {
        const float* wanted = &soup.positions[3 * static_cast<std::size_t>(soup.triangles[corner])];
        for (int axis = 0; axis < 3; ++axis) {
            const double gap = static_cast<double>(position(corner, axis)) - static_cast<double>(wanted[axis]);
            if (!(gap <= tolerance * largest && -gap <= tolerance * largest)) return false;
        }
    }
    return true;
}

/// `sameCorners` for a mesh given by its arrays, which must also have `numVertices` vertices.
bool sameSurface(const Soup& soup, const Soup& other, int numVertices, double tolerance);

} // namespace bench
