#include "bench/checks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
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

struct Vec
{
    double x = 0, y = 0, z = 0;

    friend Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec operator*(double factor, Vec a) { return {factor * a.x, factor * a.y, factor * a.z}; }
};

double dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec cross(Vec a, Vec b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
double length(Vec a) { return std::sqrt(dot(a, a)); }

Vec vecAt(const float* values)
{
    return {static_cast<double>(values[0]), static_cast<double>(values[1]), static_cast<double>(values[2])};
}

/// A corner of a triangle, counted through all triangles.
Vec cornerAt(const Soup& soup, std::size_t corner)
{
    return vecAt(&soup.positions[3 * static_cast<std::size_t>(soup.triangles[corner])]);
}

/// Its length is twice the area.
Vec normalOf(const Soup& soup, std::size_t firstCorner)
{
    const Vec a = cornerAt(soup, firstCorner);
    return cross(cornerAt(soup, firstCorner + 1) - a, cornerAt(soup, firstCorner + 2) - a);
}

double distance2ToSide(Vec point, Vec a, Vec b)
{
    const Vec side = b - a;
    const double size2 = dot(side, side);
    const double along = size2 > 0 ? std::clamp(dot(point - a, side) / size2, 0.0, 1.0) : 0;
    const Vec gap = point - (a + along * side);
    return dot(gap, gap);
}

/// The squared distance: to the plane where the point lies over the triangle, else to the nearest side.
double distance2ToTriangle(Vec point, const std::array<Vec, 3>& corners)
{
    const Vec normal = cross(corners[1] - corners[0], corners[2] - corners[0]);
    bool over = dot(normal, normal) > 0;
    double nearest = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < 3; ++i) {
        const Vec from = corners[i], to = corners[(i + 1) % 3];
        over = over && dot(cross(to - from, point - from), normal) >= 0;
        nearest = std::min(nearest, distance2ToSide(point, from, to));
    }
    if (!over) return nearest;
    const double height = dot(point - corners[0], normal);
    return std::min(nearest, height * height / dot(normal, normal));
}

double longestSide(const Soup& soup)
{
    double longest = 0;
    for (std::size_t corner = 0; corner < soup.triangles.size(); ++corner) {
        const std::size_t next = corner % 3 == 2 ? corner - 2 : corner + 1;
        longest = std::max(longest, length(cornerAt(soup, next) - cornerAt(soup, corner)));
    }
    return longest;
}

/// Skips triangles whose first corner is too far away for any of their points to be the nearest.
double distanceTo(const Soup& soup, Vec point, double longest)
{
    double nearest2 = std::numeric_limits<double>::max(), reach2 = nearest2;
    for (std::size_t corner = 0; corner < soup.triangles.size(); corner += 3) {
        const Vec first = cornerAt(soup, corner);
        if (dot(point - first, point - first) > reach2) continue;
        const double distance2 =
            distance2ToTriangle(point, {first, cornerAt(soup, corner + 1), cornerAt(soup, corner + 2)});
        if (distance2 >= nearest2) continue;
        nearest2 = distance2;
        const double reach = std::sqrt(nearest2) + longest;
        reach2 = reach * reach * (1 + 1e-9);
    }
    return std::sqrt(nearest2);
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

double areaOf(const Soup& soup)
{
    double sum = 0;
    for (std::size_t corner = 0; corner < soup.triangles.size(); corner += 3) sum += length(normalOf(soup, corner)) / 2;
    return sum;
}

int components(const Soup& soup)
{
    std::vector<int> parent(soup.positions.size() / 3);
    std::iota(parent.begin(), parent.end(), 0);
    const auto rootOf = [&](int vertex) {
        while (parent[static_cast<std::size_t>(vertex)] != vertex) {
            int& above = parent[static_cast<std::size_t>(vertex)];
            above = parent[static_cast<std::size_t>(above)];
            vertex = above;
        }
        return vertex;
    };
    std::vector<bool> used(parent.size(), false);
    for (std::size_t corner = 0; corner < soup.triangles.size(); ++corner) {
        used[static_cast<std::size_t>(soup.triangles[corner])] = true;
        const int root = rootOf(soup.triangles[corner]);
        parent[static_cast<std::size_t>(root)] = rootOf(soup.triangles[corner - corner % 3]);
    }
    int roots = 0;
    for (std::size_t vertex = 0; vertex < parent.size(); ++vertex)
        roots += used[vertex] && parent[vertex] == static_cast<int>(vertex);
    return roots;
}

bool isConsistentlyWound(const std::vector<int>& triangles)
{
    std::vector<std::array<int, 2>> sides;
    for (std::size_t corner = 0; corner < triangles.size(); ++corner)
        sides.push_back({triangles[corner], triangles[corner % 3 == 2 ? corner - 2 : corner + 1]});
    std::sort(sides.begin(), sides.end());
    return std::adjacent_find(sides.begin(), sides.end()) == sides.end();
}

int borderVertices(const Soup& soup)
{
    std::vector<bool> onBorder(soup.positions.size() / 3, false);
    const std::vector<EdgeUse> uses = sortedEdgeUses(soup);
    for (std::size_t i = 0; i < uses.size(); ++i) {
        const bool shared =
            (i > 0 && uses[i].sameEdge(uses[i - 1])) || (i + 1 < uses.size() && uses[i].sameEdge(uses[i + 1]));
        if (shared) continue;
        onBorder[static_cast<std::size_t>(uses[i].low)] = true;
        onBorder[static_cast<std::size_t>(uses[i].high)] = true;
    }
    return static_cast<int>(std::count(onBorder.begin(), onBorder.end(), true));
}

bool areVertexNormals(const Soup& soup, const float* normals)
{
    std::vector<Vec> sums(soup.positions.size() / 3);
    for (std::size_t corner = 0; corner < soup.triangles.size(); ++corner) {
        const Vec normal = normalOf(soup, corner - corner % 3);
        Vec& sum = sums[static_cast<std::size_t>(soup.triangles[corner])];
        if (length(normal) > 0) sum = sum + (1 / length(normal)) * normal;
    }
    std::size_t differing = 0;
    for (std::size_t vertex = 0; vertex < sums.size(); ++vertex)
        differing += !(length(sums[vertex] - length(sums[vertex]) * vecAt(normals + 3 * vertex)) < 1e-3);
    return differing * 1000 <= sums.size();
}

std::vector<double> distancesTo(const Soup& soup, const std::vector<float>& points)
{
    const double longest = longestSide(soup);
    std::vector<double> distances;
    for (std::size_t i = 0; i < points.size(); i += 3)
        distances.push_back(distanceTo(soup, vecAt(&points[i]), longest));
    return distances;
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
