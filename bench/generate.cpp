#include "bench/generate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <random>
#include <span>
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

/// Evenly distributed numbers in [low, high), the same from every standard library.
class Evenly
{
public:
    explicit Evenly(std::uint64_t seed) : random_(seed) {}
    double operator()(double low, double high)
    {
        return low + (high - low) * static_cast<double>(random_() >> 11) * 0x1p-53;
    }

private:
    std::mt19937_64 random_;
};

/// Along a random direction, all equally likely.
std::array<double, 3> randomStep(Evenly& evenly, double length)
{
    const double height = evenly(-1, 1), angle = evenly(0, 2 * std::numbers::pi);
    const double radius = std::sqrt(1 - height * height);
    return {length * radius * std::cos(angle), length * radius * std::sin(angle), length * height};
}

std::array<double, 3> randomPlace(const Soup& soup, Evenly& evenly)
{
    const auto triangle = static_cast<std::size_t>(evenly(0, soup.numTriangles()));
    double toSecond = evenly(0, 1), toThird = evenly(0, 1);
    if (toSecond + toThird > 1) toSecond = 1 - toSecond, toThird = 1 - toThird;
    const double weights[] = {1 - toSecond - toThird, toSecond, toThird};
    std::array<double, 3> place{};
    for (std::size_t corner = 0; corner < 3; ++corner)
        for (std::size_t axis = 0; axis < 3; ++axis)
            place[axis] +=
                weights[corner] *
                static_cast<double>(
                    soup.positions[3 * static_cast<std::size_t>(soup.triangles[3 * triangle + corner]) + axis]);
    return place;
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

std::vector<int> trianglesOnOneSide(const Soup& soup)
{
    const Box box = boxOf(soup);
    const float middle = (box.low[0] + box.high[0]) / 2;
    std::vector<int> chosen;
    for (int triangle = 0; triangle < soup.numTriangles(); ++triangle) {
        const int corner = soup.triangles[3 * static_cast<std::size_t>(triangle)];
        if (soup.positions[3 * static_cast<std::size_t>(corner)] > middle) chosen.push_back(triangle);
    }
    return chosen;
}

Soup part(const Soup& soup, const std::vector<int>& triangles)
{
    std::vector<int> newVertex(soup.positions.size() / 3, -1);
    Soup result;
    for (const int triangle : triangles)
        for (const int vertex : std::span(soup.triangles).subspan(3 * static_cast<std::size_t>(triangle), 3)) {
            newVertex[static_cast<std::size_t>(vertex)] = 0;
            result.triangles.push_back(vertex);
        }
    for (std::size_t vertex = 0; vertex < newVertex.size(); ++vertex) {
        if (newVertex[vertex] < 0) continue;
        newVertex[vertex] = result.numVertices();
        const float* position = &soup.positions[3 * vertex];
        result.positions.insert(result.positions.end(), position, position + 3);
    }
    for (int& vertex : result.triangles) vertex = newVertex[static_cast<std::size_t>(vertex)];
    return result;
}

Soup punched(const Soup& soup)
{
    std::vector<int> kept;
    for (int triangle = 0; triangle < soup.numTriangles(); ++triangle)
        if (triangle % 100 != 0) kept.push_back(triangle);
    return part(soup, kept);
}

Soup partlyTurnedOver(const Soup& soup)
{
    Soup result = soup;
    for (std::size_t corner = 0; corner < result.triangles.size(); corner += 30)
        std::swap(result.triangles[corner], result.triangles[corner + 1]);
    return result;
}

Box boxOf(const Soup& soup)
{
    Box box;
    for (std::size_t axis = 0; axis < 3; ++axis) box.low[axis] = box.high[axis] = soup.positions[axis];
    for (std::size_t i = 0; i < soup.positions.size(); ++i) {
        box.low[i % 3] = std::min(box.low[i % 3], soup.positions[i]);
        box.high[i % 3] = std::max(box.high[i % 3], soup.positions[i]);
    }
    return box;
}

std::vector<float> queryPoints(const Soup& soup, Spread spread, int count)
{
    const Box box = boxOf(soup);
    Evenly evenly(19720212);
    std::vector<float> points;
    points.reserve(3 * static_cast<std::size_t>(count));
    for (int query = 0; query < count; ++query) {
        std::array<double, 3> point{};
        if (spread == Spread::near) {
            point = randomPlace(soup, evenly);
            const std::array<double, 3> step = randomStep(evenly, 0.01 * box.diagonal());
            for (std::size_t axis = 0; axis < 3; ++axis) point[axis] += step[axis];
        } else {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const auto low = static_cast<double>(box.low[axis]), high = static_cast<double>(box.high[axis]);
                const double margin = 0.1 * (high - low);
                point[axis] = evenly(low - margin, high + margin);
            }
        }
        for (const double coordinate : point) points.push_back(static_cast<float>(coordinate));
    }
    return points;
}

double Box::diagonal() const
{
    double sum = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double side = static_cast<double>(high[axis]) - static_cast<double>(low[axis]);
        sum += side * side;
    }
    return std::sqrt(sum);
}

} // namespace bench
