#include "znGeom/parameterize/internal/boundary_walk.h"

#include <algorithm>

namespace znGeom::internal {

BoundaryWalk::BoundaryWalk(const CompactMesh& mesh) : m_mesh(mesh), m_output(znOS::AppOutput::getInstance()) {}

int BoundaryWalk::findBoundaryEdges(zn::vector<UnsortedEdge>& edges, znUtil::Progress& progress)
{
    edges.clear();
    const int numTriangles = m_mesh.getNumTriangles();
    const MeshTriangle* triangles = m_mesh.getTriangles();
    for (int i = 0; i < numTriangles; ++i) {
        if (testDegenerate(i)) return -1;
        if (i % 100 == 0) progress.set(static_cast<double>(i) / numTriangles);
        if (progress.cancelled()) return -1;
        int adjacent[3] = {-1, -1, -1};
        if (!findNeighbours(i, adjacent)) return -1;
        for (int side = 0; side < 3; ++side)
            if (adjacent[side] < 0)
                edges.append({triangles[i][side], triangles[i][cornerAfter(side)], i, static_cast<std::uint8_t>(side)});
    }
    return static_cast<int>((edges.size() + 3LL * numTriangles) / 2);
}

bool BoundaryWalk::testDegenerate(int triangle)
{
    const MeshTriangle& corners = m_mesh.getTriangles()[triangle];
    if (!repeatsVertex(corners)) return false;
    m_output.error("Found degenerate triangle %d (%d,%d,%d), mesh not changed. \n", triangle, corners[0], corners[1],
                   corners[2]);
    return true;
}

/// \param adjacent  receives the triangle across each side; -1 for none
bool BoundaryWalk::findNeighbours(int triangle, int* adjacent)
{
    for (int other = 0; other < m_mesh.getNumTriangles(); ++other) {
        if (other == triangle) continue;
        if (testDegenerate(other)) return false;
        for (int side = 0; side < 3; ++side)
            if (compareTriangles(side, triangle, other, adjacent)) return false;
    }
    return true;
}

/// Looks whether a triangle lies along a side of another. \return whether it does so where or how it must not
bool BoundaryWalk::compareTriangles(int side, int first, int second, int* adjacent)
{
    const MeshTriangle &triangle = m_mesh.getTriangles()[first], &other = m_mesh.getTriangles()[second];
    const int start = triangle[side], end = triangle[cornerAfter(side)];
    const bool isReversed = hasDirectedEdge(other, end, start), isParallel = hasDirectedEdge(other, start, end);
    const char* fault = nullptr;
    if (adjacent[side] >= 0)
        fault = isReversed || isParallel ? "non-manifold" : nullptr;
    else if (isReversed)
        adjacent[side] = second;
    else if (isParallel)
        fault = "reverse wound";
    if (fault)
        m_output.error("Invalid mesh, %s triangle %d (%d,%d,%d) \n", fault, second, other[0], other[1], other[2]);
    return fault != nullptr;
}

int BoundaryWalk::orderBoundaries(zn::vector<UnsortedEdge>& edges, zn::vector<zn::vector<Edge>>& boundaries)
{
    const char* fault = nullptr;
    for (int i = 0; i < edges.size() && !fault; ++i) {
        if (edges[i].isTaken) continue;
        edges[i].isTaken = true;
        const int first = edges[i].start;
        int last = edges[i].end;
        zn::vector<Edge> boundary{{first, last}};
        if (first == last) {
            fault = "A degenerate boundary found, mesh not changed. \n";
            break;
        }
        follow(edges, i, last, boundary);
        if (last != first)
            fault = "Found an un-closed boundary, mesh not changed. \n";
        else if (boundary.size() < 3)
            fault = "A degenerate boundary found, mesh not changed. \n";
        boundaries.append(std::move(boundary));
    }
    if (fault) m_output.error("%s", fault);
    return fault ? -1 : boundaries.size();
}

/// Goes on by the first later edge that continues it, until the boundary is closed or there is none.
void BoundaryWalk::follow(zn::vector<UnsortedEdge>& edges, int from, int& last, zn::vector<Edge>& boundary)
{
    const auto continues = [&last](const UnsortedEdge& edge) { return !edge.isTaken && edge.start == last; };
    while (last != boundary[0].start) {
        UnsortedEdge* const next = std::find_if(edges.begin() + from + 1, edges.end(), continues);
        if (next == edges.end()) return;
        next->isTaken = true;
        boundary.append({next->start, next->end});
        last = next->end;
    }
}

} // namespace znGeom::internal
