#include "bench/checks.h"

#include <algorithm>
#include <array>
#include <utility>

namespace bench {
namespace {

struct EdgeUse
{
    int low, high, triangle;
    auto operator<=>(const EdgeUse&) const = default;
    bool sameEdge(const EdgeUse& other) const { return low == other.low && high == other.high; }
};

std::vector<EdgeUse> sortedEdgeUses(const Soup& soup)
{
    std::vector<EdgeUse> uses;
    uses.reserve(soup.triangles.size());
    for (int triangle = 0; triangle < soup.numTriangles(); ++triangle) {
        const int* corners = &soup.triangles[3 * static_cast<std::size_t>(triangle)];
        for (int corner = 0; corner < 3; ++corner) {
            const auto [low, high] = std::minmax(corners[corner], corners[(corner + 1) % 3]);
            uses.push_back({low, high, triangle});
        }
    }
    std::sort(uses.begin(), uses.end());
    return uses;
}

} // namespace

RelationSum vertexTriangles(const Soup& soup)
{
    RelationSum relation;
    for (std::size_t corner = 0; corner < soup.triangles.size(); ++corner)
        relation.add(soup.triangles[corner], static_cast<std::int64_t>(corner / 3));
    return relation;
}

RelationSum vertexNeighbours(const Soup& soup)
{
    RelationSum relation;
    const EdgeUse* last = nullptr;
    const std::vector<EdgeUse> uses = sortedEdgeUses(soup);
    for (const EdgeUse& use : uses) {
        if (use.low != use.high && (last == nullptr || !use.sameEdge(*last))) {
            relation.add(use.low, use.high);
            relation.add(use.high, use.low);
        }
        last = &use;
    }
    return relation;
}

RelationSum triangleNeighbours(const Soup& soup)
{
    RelationSum relation;
    const std::vector<EdgeUse> uses = sortedEdgeUses(soup);
    for (auto begin = uses.begin(); begin != uses.end();) {
        const auto end = std::find_if(begin, uses.end(), [&](const EdgeUse& use) { return !use.sameEdge(*begin); });
        for (auto from = begin; from != end; ++from)
            for (auto to = begin; to != end; ++to)
                if (from->triangle != to->triangle) relation.add(from->triangle, to->triangle);
        begin = end;
    }
    return relation;
}

int distinctPositions(const Soup& soup)
{
    std::vector<std::array<float, 3>> positions;
    for (std::size_t i = 0; i < soup.positions.size(); i += 3)
        positions.push_back({soup.positions[i], soup.positions[i + 1], soup.positions[i + 2]});
    std::sort(positions.begin(), positions.end());
    return static_cast<int>(std::unique(positions.begin(), positions.end()) - positions.begin());
}

bool sameSurface(const Soup& soup, const Soup& other, int numVertices, double tolerance)
{
    return other.numVertices() == numVertices &&
           sameCorners(soup, other.numTriangles(), tolerance, [&](std::size_t corner, int axis) {
               return other
                   .positions[3 * static_cast<std::size_t>(other.triangles[corner]) + static_cast<std::size_t>(axis)];
           });
}

} // namespace bench
