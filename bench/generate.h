/// Meshes for the benchmarks as plain arrays, the same in every run and on every machine.
#pragma once

#include <array>
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

struct Box
{
    std::array<float, 3> low{}, high{};

    double diagonal() const;
};

/// The box of all vertices, of which there must be one.
Box boxOf(const Soup& soup);

/// A closed torus with bumps, turned off the axes, of `rings` x `sides` quadrilaterals cut in two.
///
/// Vertices and triangles come ring by ring, which caches like: see `shuffled` for the other extreme.
Soup bumpyTorus(int rings, int sides);

/// The same surface with its vertices renumbered and its triangles reordered at random (fixed seed).
Soup shuffled(const Soup& soup);

/// The same surface with three vertices of its own for each triangle, in triangle order.
Soup blownUp(const Soup& soup);

/// The numbers of the triangles that begin on one side of a plane through the middle, in order: about half.
std::vector<int> trianglesOnOneSide(const Soup& soup);

/// The given triangles and the vertices that they use, both in the order that they have in `soup`.
Soup part(const Soup& soup, const std::vector<int>& triangles);

/// The same surface with about ten thousand holes in a million triangles: every hundredth triangle is left out.
Soup punched(const Soup& soup);

/// The same surface with a tenth of its triangles turned over.
Soup partlyTurnedOver(const Soup& soup);

/// Points at which to ask for the nearest place of a surface, three numbers each, in random order (fixed seed).
enum class Spread {
    near, ///< a hundredth of the box's diagonal away from a place of the surface
    wide  ///< evenly over the box, which is a fifth longer on each axis
};
std::vector<float> queryPoints(const Soup& soup, Spread spread, int count);

} // namespace bench
