// Triangulating a loop of points.
#include "bench/polygon.h"
#include "bench/suite.h"
#include "znGeom/planar/shapes/triangulate_polygon.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

namespace bench {

std::vector<std::array<double, 3>> noisyLoop()
{
    constexpr int numPoints = 1000;
    constexpr double step = 2 * 3.14159265358979323846 / numPoints;
    std::mt19937 random(1);
    const auto noise = [&random] { return step * (2 * static_cast<double>(random()) * 0x1p-32 - 1); };
    std::vector<std::array<double, 3>> loop(numPoints);
    for (int i = 0; i < numPoints; ++i) {
        std::array<double, 3>& point = loop[static_cast<std::size_t>(i)];
        point = {std::cos(step * i), std::sin(step * i), 0};
        for (double& value : point) value += noise();
    }
    return loop;
}

bool closesLoop(int numPoints, const std::vector<int>& triangles)
{
    if (triangles.size() != 3 * static_cast<std::size_t>(numPoints - 2)) return false;
    // With the loop's own sides, the other way round, each edge must be there once each way.
    std::vector<std::pair<int, int>> edges, reversed;
    for (std::size_t i = 0; i < triangles.size(); ++i)
        edges.emplace_back(triangles[i], triangles[i % 3 == 2 ? i - 2 : i + 1]);
    for (int i = 0; i < numPoints; ++i) edges.emplace_back((i + 1) % numPoints, i);
    for (const auto& [from, to] : edges) reversed.emplace_back(to, from);
    std::sort(edges.begin(), edges.end());
    std::sort(reversed.begin(), reversed.end());
    return edges == reversed && std::adjacent_find(edges.begin(), edges.end()) == edges.end();
}

} // namespace bench

namespace {

using Points = zn::vector<znLinear::Point>;

zn::vector<int> triangulate(const Points& loop)
{
    zn::vector<int> triangles;
    znGeom::triangulatePolygon(loop, triangles, nullptr, nullptr);
    return triangles;
}

void runTriangulation(benchmark::State& state)
{
    Points loop;
    for (const auto& [x, y, z] : bench::noisyLoop()) loop.append(znLinear::Point(x, y, z));
    const zn::vector<int> triangles = triangulate(loop);
    if (!bench::closesLoop(loop.size(), {triangles.begin(), triangles.end()}))
        return state.SkipWithError("the result does not close the loop");
    bench::timeWork(
        state, [&] { return &loop; }, [](const Points* given) { return triangulate(*given); });
}

[[maybe_unused]] const bool listed = bench::measureAlone("triangulate_polygon", "znGeom", runTriangulation, 1);

} // namespace
