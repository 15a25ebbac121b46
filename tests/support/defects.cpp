#include "tests/support/defects.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

namespace znTest {

using znGeom::CompactMesh;
using znGeom::MeshTriangle;
using znGeom::MeshVertex;

namespace {

int countDuplicates(const CompactMesh& mesh)
{
    std::vector<std::array<int, 3>> sorted;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        sorted.push_back(std::to_array(mesh.getTriangles()[t].corners));
        std::sort(sorted.back().begin(), sorted.back().end());
    }
    std::sort(sorted.begin(), sorted.end());
    return static_cast<int>(sorted.end() - std::unique(sorted.begin(), sorted.end()));
}

int countDegenerate(const CompactMesh& mesh)
{
    int count = 0;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const int* corners = mesh.getTriangles()[t].corners;
        const auto same = [&](int i, int j) {
            const MeshVertex &a = mesh.getVertices()[corners[i]], &b = mesh.getVertices()[corners[j]];
            return corners[i] == corners[j] || (a.x == b.x && a.y == b.y && a.z == b.z);
        };
        count += same(0, 1) || same(1, 2) || same(2, 0);
    }
    return count;
}

void countBadEdges(const CompactMesh& mesh, Defects& defects)
{
    std::vector<std::array<int, 2>> sides;
    for (int side = 0; side < 3 * mesh.getNumTriangles(); ++side) {
        const int* corners = mesh.getTriangles()[side / 3].corners;
        if (corners[side % 3] != corners[(side + 1) % 3]) sides.push_back({corners[side % 3], corners[(side + 1) % 3]});
    }
    std::sort(sides.begin(), sides.end());
    auto directed = sides;
    defects.unbalanced = static_cast<int>(directed.end() - std::unique(directed.begin(), directed.end()));
    for (auto& side : sides) std::sort(side.begin(), side.end());
    std::sort(sides.begin(), sides.end());
    for (size_t i = 0, next = 0; i < sides.size(); i = next) {
        while (next < sides.size() && sides[next] == sides[i]) ++next;
        defects.badEdges += next - i > 2;
    }
}

/// Corners at one vertex are in one fan where their triangles share another vertex.
int countBadVertices(const CompactMesh& mesh)
{
    const int numCorners = 3 * mesh.getNumTriangles();
    const int* corners = mesh.getTrianglesRaw();
    std::vector<int> fan(static_cast<size_t>(numCorners));
    std::iota(fan.begin(), fan.end(), 0);
    const auto root = [&fan](int corner) {
        while (fan[static_cast<size_t>(corner)] != corner) corner = fan[static_cast<size_t>(corner)];
        return corner;
    };
    std::vector<std::array<int, 3>> sides; // vertex, neighbour, corner
    for (int corner = 0; corner < numCorners; ++corner)
        for (int other = corner / 3 * 3; other < corner / 3 * 3 + 3; ++other)
            if (other != corner) sides.push_back({corners[corner], corners[other], corner});
    std::sort(sides.begin(), sides.end());
    for (size_t i = 1; i < sides.size(); ++i)
        if (sides[i][0] == sides[i - 1][0] && sides[i][1] == sides[i - 1][1])
            fan[static_cast<size_t>(root(sides[i][2]))] = root(sides[i - 1][2]);
    std::vector<int> fans(static_cast<size_t>(mesh.getNumVertices()), 0);
    for (int corner = 0; corner < numCorners; ++corner)
        if (root(corner) == corner) ++fans[static_cast<size_t>(corners[corner])];
    return static_cast<int>(std::count_if(fans.begin(), fans.end(), [](int count) { return count > 1; }));
}

/// Appends copies of triangles, turned in every way.
void duplicate(CompactMesh& mesh, int count, Random& random)
{
    const int numTriangles = mesh.getNumTriangles();
    mesh.resizeTriangleArray(numTriangles + count);
    MeshTriangle* triangles = mesh.getTriangles();
    for (int i = 0; i < count; ++i) {
        MeshTriangle copy = triangles[random.below(numTriangles)];
        std::rotate(copy.corners, copy.corners + random.below(3), copy.corners + 3);
        if (random.oneIn(2)) std::swap(copy[0], copy[1]);
        if (random.oneIn(5)) copy[random.below(3)] = copy[random.below(3)];
        triangles[numTriangles + i] = copy;
    }
}

void flip(CompactMesh& mesh, int count, Random& random)
{
    for (int i = 0; i < count; ++i) {
        MeshTriangle& triangle = mesh.getTriangles()[random.below(mesh.getNumTriangles())];
        std::swap(triangle[0], triangle[1]);
    }
}

/// Gives corners the vertices of triangles somewhere else.
void weldAcross(CompactMesh& mesh, int count, Random& random)
{
    for (int i = 0; i < count; ++i) {
        const int from = mesh.getTrianglesRaw()[random.below(3 * mesh.getNumTriangles())];
        const int to = mesh.getTrianglesRaw()[random.below(3 * mesh.getNumTriangles())];
        const int first = random.below(mesh.getNumTriangles());
        for (int t = first; t < std::min(first + 5, mesh.getNumTriangles()); ++t)
            for (int& corner : mesh.getTriangles()[t].corners)
                if (corner == from || random.oneIn(7)) corner = to;
    }
}

void cut(CompactMesh& mesh, int count, Random& random)
{
    for (int i = 0; i < count && mesh.getNumTriangles() > 1; ++i) {
        const int last = mesh.getNumTriangles() - 1;
        mesh.getTriangles()[random.below(last)] = mesh.getTriangles()[last];
        mesh.resizeTriangleArray(last);
    }
}

/// By as much as the edges there are long.
void addNoise(CompactMesh& mesh, int count, Random& random)
{
    for (int i = 0; i < count; ++i) {
        const MeshTriangle& triangle = mesh.getTriangles()[random.below(mesh.getNumTriangles())];
        MeshVertex& vertex = mesh.getVertices()[triangle[0]];
        const double size = distance(vertex.asPoint(), mesh.getVertices()[triangle[1]].asPoint());
        const znLinear::Point moved = vertex.asPoint() + random.vector(2 * size);
        vertex.set(&moved.x);
    }
}

void addNotANumbers(CompactMesh& mesh, int count, Random& random)
{
    for (int i = 0; i < count; ++i) {
        float* vertex = &mesh.getVertices()[random.below(mesh.getNumVertices())].x;
        vertex[random.below(3)] = random.oneIn(2) ? NAN : random.oneIn(2) ? INFINITY : -INFINITY;
    }
}

} // namespace

Defects countDefects(const CompactMesh& mesh)
{
    Defects defects;
    defects.duplicates = countDuplicates(mesh);
    defects.degenerate = countDegenerate(mesh);
    countBadEdges(mesh, defects);
    defects.badVertices = countBadVertices(mesh);
    return defects;
}

void damage(CompactMesh& mesh, Damage kind, Random& random)
{
    const int count = 3 + mesh.getNumTriangles() / 100;
    if (mesh.getNumTriangles() == 0) return;
    switch (kind) {
    case Damage::Duplicated:
        return duplicate(mesh, count, random);
    case Damage::Flipped:
        return flip(mesh, count, random);
    case Damage::WeldedAcross:
        return weldAcross(mesh, count / 5 + 1, random);
    case Damage::Cut:
        return cut(mesh, count, random);
    case Damage::Noised:
        return addNoise(mesh, count, random);
    case Damage::NotANumbers:
        return addNotANumbers(mesh, count / 20 + 1, random);
    case Damage::Everything:
        for (const Damage each : allDamages)
            if (each != Damage::Everything) damage(mesh, each, random);
    }
}

} // namespace znTest
