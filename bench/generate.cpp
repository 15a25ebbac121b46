#include "bench/generate.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <random>
#include <utility>

namespace bench {
namespace {

/// Fisher-Yates with a generator whose numbers the standard fixes, unlike those of std::shuffle.
std::vector<int> randomOrder(int count, std::uint64_t seed)
{
    std::vector<int> order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::mt19937_64 random(seed);
    for (std::size_t left = order.size(); left > 1; --left) std::swap(order[left - 1], order[random() % left]);
    return order;
}

void appendTorusPoint(double around, double across, std::vector<float>& positions)
{
    const double bumps = 0.06 * std::sin(23 * around) * std::cos(17 * across) + 0.03 * std::sin(71 * around + across);
    const double tube = 1 + bumps;
    const double x = (3 + tube * std::cos(across)) * std::cos(around);
    const double y = (3 + tube * std::cos(across)) * std::sin(around);
    const double z = tube * std::sin(across);

    // Turned about two axes, so that no row of vertices shares a coordinate.
    const double turn = 0.7, tilt = 0.4;
    const double tiltedY = y * std::cos(tilt) - z * std::sin(tilt);
    const double tiltedZ = y * std::sin(tilt) + z * std::cos(tilt);
    positions.push_back(static_cast<float>(x * std::cos(turn) - tiltedY * std::sin(turn)));
    positions.push_back(static_cast<float>(x * std::sin(turn) + tiltedY * std::cos(turn)));
    positions.push_back(static_cast<float>(tiltedZ));
}

} // namespace

Soup bumpyTorus(int rings, int sides)
{
    Soup soup;
    soup.positions.reserve(3 * static_cast<std::size_t>(rings) * static_cast<std::size_t>(sides));
    soup.triangles.reserve(6 * static_cast<std::size_t>(rings) * static_cast<std::size_t>(sides));
    constexpr double fullTurn = 2 * std::numbers::pi;
    for (int ring = 0; ring < rings; ++ring)
        for (int side = 0; side < sides; ++side)
            appendTorusPoint(fullTurn * ring / rings, fullTurn * side / sides, soup.positions);

    for (int ring = 0; ring < rings; ++ring) {
        for (int side = 0; side < sides; ++side) {
            const int nextRing = (ring + 1) % rings, nextSide = (side + 1) % sides;
            const int near = ring * sides + side, nearNext = ring * sides + nextSide;
            const int far = nextRing * sides + side, farNext = nextRing * sides + nextSide;
            soup.triangles.insert(soup.triangles.end(), {near, far, farNext, near, farNext, nearNext});
        }
    }
    return soup;
}

Soup shuffled(const Soup& soup)
{
    const std::vector<int> newVertex = randomOrder(soup.numVertices(), 20240607);
    const std::vector<int> newTriangle = randomOrder(soup.numTriangles(), 19990103);
    Soup result;
    result.positions.resize(soup.positions.size());
    result.triangles.resize(soup.triangles.size());
    for (std::size_t vertex = 0; vertex < newVertex.size(); ++vertex)
        for (std::size_t axis = 0; axis < 3; ++axis)
            result.positions[3 * static_cast<std::size_t>(newVertex[vertex]) + axis] =
                soup.positions[3 * vertex + axis];
    for (std::size_t triangle = 0; triangle < newTriangle.size(); ++triangle)
        for (std::size_t corner = 0; corner < 3; ++corner)
            result.triangles[3 * static_cast<std::size_t>(newTriangle[triangle]) + corner] =
                newVertex[static_cast<std::size_t>(soup.triangles[3 * triangle + corner])];
    return result;
}

Soup blownUp(const Soup& soup)
{
    Soup result;
    result.positions.reserve(3 * soup.triangles.size());
    for (const int vertex : soup.triangles) {
        const float* position = &soup.positions[3 * static_cast<std::size_t>(vertex)];
        result.positions.insert(result.positions.end(), position, position + 3);
    }
    result.triangles.resize(soup.triangles.size());
    std::iota(result.triangles.begin(), result.triangles.end(), 0);
    return result;
}

} // namespace bench
