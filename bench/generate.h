/// Meshes for the benchmarks as plain arrays, the same in every run and on every machine.
#pragma once

#include <vector>

namespace bench {

/// Triangles over shared positions; it belongs to no library, so every side is fed from the same arrays.
struct Soup
{
    std::vector<float> positions; ///< three per vertex
    std::vector<int> triangles;   ///< three per triangle

    int numVertices() const { return static_cast<int>(positions.size() / 3); }
    int numTriangles() const { return static_cast<int>(triangles.size() / 3); }
};

/// A closed torus with bumps, turned off the axes, of `rings` x `sides` quadrilaterals cut in two.
///
/// Vertices and triangles come ring by ring, which caches like: see `shuffled` for the other end.
Soup bumpyTorus(int rings, int sides);

/// The same surface with its vertices renumbered and its triangles reordered at random (fixed seed).
Soup shuffled(const Soup& soup);

/// The same surface with three vertices of its own for each triangle, in triangle order.
Soup blownUp(const Soup& soup);

} // namespace bench
