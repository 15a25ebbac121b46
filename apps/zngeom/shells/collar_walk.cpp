#include "apps/zngeom/shells/collar_walk.h"

#include <algorithm>
#include <span>

#include "apps/zngeom/frame/failure.h"
#include "znGeom/analysis/boundaries.h"

namespace tool {

using znGeom::MeshCollar;
using znGeom::MeshCoord;

namespace {

/// A walk may begin between vertices, where frames are the same for walks that end and walks that begin. A part of an
/// edge that has no vertex across on a loop of equal edges, however many they are.
constexpr double partOfEdge = 0.381966;

class LoopWalk
{
public:
    explicit LoopWalk(const CollarLoop& loop)
        : m_mesh(loop.mesh), m_adjTris(loop.adjTris), m_name(loop.name),
          m_vertices(loop.boundaries.getStart(loop.loop), loop.boundaries.getEnd(loop.loop)), m_loop(loop.loop),
          m_collar(loop.mesh, loop.adjTris, loop.boundaries)
    {}

    MeshCoord placeAt(int vertex) const
    {
        if (std::find(m_vertices.begin(), m_vertices.end(), vertex) == m_vertices.end())
            throw Failure("vertex " + std::to_string(vertex) + " is not on " + m_name);
        return placeOn(vertex, vertex, 0);
    }

    double lengthBetween(const MeshCoord& a, const MeshCoord& b) const
    {
        return m_collar.getDistance(a, b, m_loop, true);
    }

    /// \param count  0 for the path's own points
    zn::vector<MeshCollar::Point> pointsBetween(const MeshCoord& a, const MeshCoord& b, int count, bool curvature,
                                                bool forward = true) const
    {
        MeshCollar::Params params;
        params.computeCurvature = curvature;
        params.usePathPoints = false;
        params.count = count;
        zn::vector<MeshCollar::Point> points;
        m_collar.getPoints(a, b, params, m_loop, forward, points);
        return points;
    }

    void checkCloses() const
    {
        if (m_vertices.size() > 1 && znGeom::Boundary::hasEdge(m_mesh, m_adjTris, m_vertices.back(), m_vertices[0]))
            return;
        throw Failure(m_name + " does not close: it touches another, and comes in pieces unless the mesh is repaired");
    }

    /// The middles of the two longest edges, each by its number in the loop.
    std::pair<std::size_t, std::size_t> longestEdges() const
    {
        std::size_t longest = 0, second = 1;
        for (std::size_t i = 1; i < m_vertices.size(); ++i) {
            if (edgeLength(i) > edgeLength(longest))
                second = std::exchange(longest, i);
            else if (second == longest || edgeLength(i) > edgeLength(second))
                second = i;
        }
        return {longest, second};
    }

    MeshCoord placeWithin(std::size_t edge, double part) const
    {
        return placeOn(vertexAt(edge), vertexAt(edge + 1), part);
    }

    /// The place that lies farther along the loop than a place within an edge.
    MeshCoord placeAfter(std::size_t edge, double part, double distance) const
    {
        distance += part * edgeLength(edge);
        const std::size_t end = edge + m_vertices.size();
        while (edge < end && distance > edgeLength(edge)) distance -= edgeLength(edge++);
        return placeWithin(edge, edgeLength(edge) > 0 ? distance / edgeLength(edge) : 0);
    }

private:
    int vertexAt(std::size_t place) const { return m_vertices[place % m_vertices.size()]; }
    double edgeLength(std::size_t edge) const
    {
        return distance(m_mesh.getVertices()[vertexAt(edge)].asPoint(),
                        m_mesh.getVertices()[vertexAt(edge + 1)].asPoint());
    }

    MeshCoord placeOn(int from, int to, double part) const
    {
        MeshCoord place;
        for (const int triangle : m_adjTris.around(from)) {
            const znGeom::MeshTriangle& corners = m_mesh.getTriangles()[triangle];
            if (from != to && !znGeom::hasDirectedEdge(corners, from, to)) continue;
            place.triangle = triangle;
            place.weights[znGeom::cornerOf(corners, from)] += 1 - part;
            place.weights[znGeom::cornerOf(corners, to)] += part;
            break;
        }
        return place;
    }

    const znGeom::CompactMesh& m_mesh;
    const znGeom::MeshAdjTris& m_adjTris;
    std::string m_name;
    std::span<const int> m_vertices;
    int m_loop;
    MeshCollar m_collar;
};

/// Joins the halves of a loop.
/// \param ends  how many points at the beginning and at the end of each half are left out
void append(zn::vector<MeshCollar::Point>& all, const zn::vector<MeshCollar::Point>& half, int ends)
{
    for (int i = ends; i < half.size() - ends; ++i) all.append(half[i]);
}

} // namespace

CollarWalk walkLoop(const CollarLoop& loop, int count, bool computeCurvature)
{
    const LoopWalk walk(loop);
    walk.checkCloses();
    const auto [first, second] = walk.longestEdges();
    const MeshCoord begin = walk.placeWithin(first, partOfEdge);
    MeshCoord middle = walk.placeWithin(second, partOfEdge);
    CollarWalk result;
    result.closed = true;
    result.length = walk.lengthBetween(begin, middle) + walk.lengthBetween(middle, begin);
    const int ofFirst = count / 2;
    if (count > 0) middle = walk.placeAfter(first, partOfEdge, result.length * ofFirst / count);
    // The halves of a walk to the vertices begin and end between them.
    const int ends = count > 0 ? 0 : 1;
    append(result.points, walk.pointsBetween(begin, middle, ofFirst, computeCurvature), ends);
    append(result.points, walk.pointsBetween(middle, begin, count - ofFirst, computeCurvature), ends);
    const int expected = count > 0 ? count : loop.boundaries.getLength(loop.loop);
    if (result.points.size() != expected) throw Failure(loop.name + " can't be walked round");
    return result;
}

CollarWalk walkPart(const CollarLoop& loop, int from, int to, int count, bool computeCurvature)
{
    const LoopWalk walk(loop);
    const MeshCoord begin = walk.placeAt(from), end = walk.placeAt(to);
    CollarWalk result;
    result.points = walk.pointsBetween(begin, end, count, computeCurvature);
    if (result.points.empty())
        throw Failure("there is no way along " + loop.name + " from vertex " + std::to_string(from) + " to vertex " +
                      std::to_string(to));
    result.length = walk.lengthBetween(begin, end);
    if (count > 0) // the last step ends where the way back begins
        result.points.append(walk.pointsBetween(end, begin, 1, computeCurvature, false));
    return result;
}

} // namespace tool
