#include "znGeom/repair/orient.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// Where the sides go that start at a vertex, in search of two triangles whose sides go to the same.
class DepartureCheck
{
public:
    DepartureCheck(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_triangles(mesh.getTriangles()), m_adjTris(adjTris)
    {}

    bool allDiffer(Slice vertices)
    {
        for (int vertex = vertices.begin; vertex < vertices.end; ++vertex)
            if (!plainlyDiffer(vertex) && !differ(vertex)) return false;
        return true;
    }

private:
    static constexpr size_t smallValence = 24;

    /// True only if no two sides that start at a vertex go to the same one.
    bool plainlyDiffer(int vertex) const
    {
        const std::span<const int> around = m_adjTris.around(vertex);
        if (around.size() > smallValence) return false;
        std::array<int, smallValence> ends;
        bool same = false;
        for (size_t i = 0; i < around.size(); ++i) {
            const MeshTriangle& triangle = m_triangles[around[i]];
            ends[i] = triangle[0] == vertex ? triangle[1] : triangle[1] == vertex ? triangle[2] : triangle[0];
            for (size_t j = 0; j < i; ++j) same |= ends[j] == ends[i];
        }
        return !same;
    }

    bool differ(int vertex)
    {
        m_departures.clear();
        for (const int t : m_adjTris.around(vertex))
            for (int corner = 0; corner < 3; ++corner)
                if (m_triangles[t][corner] == vertex) m_departures.append({m_triangles[t][cornerAfter(corner)], t});
        std::sort(m_departures.begin(), m_departures.end());
        const auto collide = [](const Departure& a, const Departure& b) {
            return a.first == b.first && a.second != b.second;
        };
        return std::adjacent_find(m_departures.begin(), m_departures.end(), collide) == m_departures.end();
    }

    using Departure = std::pair<int, int>; ///< the vertex to which a side goes, triangle

    const MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
    zn::vector<Departure> m_departures;
};

/// Goes from triangle to triangle across edges, breadth first, and turns over what is wound against where it came from.
class WindingSearch
{
public:
    /// \param visited  one bit per triangle
    /// \param queue    room for as many triangles
    WindingSearch(CompactMesh& mesh, const MeshAdjTris& adjTris, BitVector& visited, int* queue)
        : m_triangles(mesh.getTriangles()), m_adjTris(adjTris), m_visited(visited), m_queue(queue)
    {}

    /// Returns false as soon as it meets a triangle that was visited before and is wound the wrong way.
    bool run(int seed)
    {
        m_queueEnd = 0;
        visit(seed);
        for (int next = 0; next < m_queueEnd; ++next) {
            prefetchFrom(next);
            const MeshTriangle triangle = m_triangles[m_queue[next]];
            for (int corner = 0; corner < 3; ++corner)
                if (!spread(m_queue[next], triangle[corner], triangle[cornerAfter(corner)])) return false;
        }
        return true;
    }

    int offending() const { return m_offending; }
    bool turnedOver() const { return m_turnedOver; }

private:
    /// How many places ahead in the queue what a triangle will be compared with is prefetched, one thing leading to the
    /// next: meshes in no particular order would otherwise wait for memory at every step.
    static constexpr int startsAhead = 24, entriesAhead = 16, trianglesAhead = 8;
    static constexpr size_t mostAround = 8; ///< no more of them, for the sake of vertices with very many

    void prefetchFrom(int next) const
    {
        if (next + startsAhead >= m_queueEnd) return;
        const auto corners = [ this, next ](int ahead) -> auto& { return m_triangles[m_queue[next + ahead]].corners; };
        for (const int corner : corners(startsAhead)) znUtil::prefetch(&m_adjTris.table().start[corner]);
        for (const int corner : corners(entriesAhead)) znUtil::prefetch(m_adjTris.triIndices(corner));
        for (const int corner : corners(trianglesAhead)) {
            const std::span<const int> around = m_adjTris.around(corner);
            for (const int triangle : around.first(std::min(around.size(), mostAround)))
                znUtil::prefetch(m_triangles + triangle);
        }
    }

    void visit(int triangle)
    {
        m_visited.setBit(triangle);
        m_queue[m_queueEnd++] = triangle;
    }

    /// Meets the other triangles on a side in ascending order, one that names `from` twice once for each time. They are
    /// around either end: the one with fewer triangles is searched. A jump for each would be mispredicted too often.
    bool spread(int triangle, int from, int to)
    {
        const bool atStart = m_adjTris.numTris(from) <= m_adjTris.numTris(to);
        const std::span<const int> around = m_adjTris.around(atStart ? from : to);
        const int farEnd = atStart ? to : from;
        for (size_t first = 0, last = 0; first < around.size(); first = last) {
            std::array<size_t, 32> onSide;
            size_t numOnSide = 0;
            for (last = std::min(around.size(), first + onSide.size()); first < last; ++first) {
                const auto [a, b, c] = m_triangles[around[first]].corners;
                onSide[numOnSide] = first;
                numOnSide += (a == farEnd) | (b == farEnd) | (c == farEnd);
            }
            for (const size_t i : std::span(onSide).first(numOnSide)) {
                if (around[i] == triangle) continue;
                int times = 1;
                if (!atStart) times = i > 0 && around[i - 1] == around[i] ? 0 : namesOf(around[i], from);
                for (; times > 0; --times)
                    if (!meet(around[i], from, to)) return false;
            }
        }
        return true;
    }

    /// How many corners of a triangle hold a vertex.
    int namesOf(int triangle, int vertex) const
    {
        const auto [a, b, c] = m_triangles[triangle].corners;
        return (a == vertex) + (b == vertex) + (c == vertex);
    }

    bool meet(int triangle, int from, int to)
    {
        MeshTriangle& met = m_triangles[triangle];
        const bool against = hasDirectedEdge(met, from, to);
        if (!against && !hasDirectedEdge(met, to, from)) return true;
        if (m_visited.isSet(triangle)) {
            if (against) m_offending = triangle;
            return !against;
        }
        if (against) {
            std::swap(met[1], met[2]);
            m_turnedOver = true;
        }
        visit(triangle);
        return true;
    }

    MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
    BitVector& m_visited;
    int* m_queue;
    int m_queueEnd = 0;
    int m_offending = -1;
    bool m_turnedOver = false;
};

} // namespace

bool meshOriented(const CompactMesh& mesh, const MeshAdjTris& adjTris, ThreadPool& pool)
{
    return znUtil::parallelReduce(
        pool, mesh.getNumVertices(), true, [&](Slice slice) { return DepartureCheck(mesh, adjTris).allDiffer(slice); },
        [](bool& all, bool part) { all = all && part; });
}

MeshOrient::MeshOrient(CompactMesh& mesh, const MeshAdjTris& adjTris)
    : m_mesh(&mesh), m_adjTris(&adjTris), m_oriented(meshOriented(mesh, adjTris)), m_orientable(m_oriented)
{}

void MeshOrient::orient()
{
    if (m_oriented) return;
    bool turnedOver = false;
    m_oriented = computeOrientation(turnedOver);
    if (m_oriented) m_orientable = true;
    if (!turnedOver) return;
    MeshModification modification(m_mesh, MeshModification::TopologyChanged);
    modification.uvsValid();
    modification.stsValid();
    modification.coloursValid();
    m_mesh->modified(modification);
}

bool MeshOrient::computeOrientation(bool& turnedOver)
{
    const int numTriangles = m_mesh->getNumTriangles();
    m_visited.resize(numTriangles);
    m_visited.clearBits();
    m_queue.resize(numTriangles);
    WindingSearch search(*m_mesh, *m_adjTris, m_visited, m_queue.write());
    bool done = true;
    for (int seed = 0; seed < numTriangles && done; ++seed)
        if (!m_visited.isSet(seed)) done = search.run(seed);
    if (!done) {
        m_offending = search.offending();
        m_visited.clearBits();
        search.run(m_offending);
    }
    turnedOver = search.turnedOver();
    return done;
}

bool meshMakeOriented(CompactMesh& mesh, const MeshAdjTris& adjTris)
{
    MeshOrient orient(mesh, adjTris);
    orient.orient();
    return orient.isOriented();
}

} // namespace znGeom
