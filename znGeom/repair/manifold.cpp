#include "znGeom/repair/manifold.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <utility>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/delete_selected.h"
#include "znGeom/editing/select.h"
#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// What a triangle has besides a vertex: two other vertices, of which one is the vertex itself where it is repeated.
struct Outer
{
    int a, b;

    bool has(int vertex) const { return a == vertex || b == vertex; }
    int besides(int vertex) const { return a ^ b ^ vertex; }
};

Outer outerVertices(const MeshTriangle& triangle, int vertex)
{
    const bool isFirst = triangle[0] == vertex;
    return {isFirst ? triangle[1] : triangle[0], isFirst || triangle[2] != vertex ? triangle[2] : triangle[1]};
}

/// The triangles around one vertex with its edges and fans; used again for vertex after vertex. A triangle that repeats
/// the vertex is there as often as it names it.
class VertexFans
{
public:
    /// A triangle's side at the vertex: the vertex at its other end, and the triangle's place among those around.
    struct Spoke
    {
        int end, place;
        friend bool operator<(const Spoke& s, const Spoke& t)
        {
            return s.end != t.end ? s.end < t.end : s.place < t.place;
        }
    };

    VertexFans(const MeshTriangle* triangles, const MeshAdjTris& adjTris) : m_triangles(triangles), m_adjTris(adjTris)
    {}

    void gather(int vertex)
    {
        m_around = m_adjTris.around(vertex);
        m_outer.clear();
        m_spokes.clear();
        for (int place = 0; place < size(); ++place) {
            m_outer.append(outerVertices(m_triangles[triangle(place)], vertex));
            m_spokes.append({m_outer.back().a, place});
            m_spokes.append({m_outer.back().b, place});
        }
        std::sort(m_spokes.begin(), m_spokes.end());
    }

    int size() const { return static_cast<int>(m_around.size()); }
    int triangle(int place) const { return m_around[static_cast<size_t>(place)]; }
    const Outer& outer(int place) const { return m_outer[place]; }

    /// Calls `visit` with the spokes of each edge of more than two sides, by ascending ends.
    template <typename Visit>
    void forEachBadEdge(const Visit& visit) const
    {
        for (const Spoke *first = m_spokes.begin(), *last = first; first != m_spokes.end(); first = last) {
            while (last != m_spokes.end() && last->end == first->end) ++last;
            if (last - first > 2) visit(std::span(first, last));
        }
    }

    bool hasBadEdge() const
    {
        bool found = false;
        forEachBadEdge([&found](auto) { found = true; });
        return found;
    }

    /// Groups the triangles into fans, which count from 0 in the order of their first triangles; returns their number.
    int findFans()
    {
        zn::DisjointSets connected(size());
        for (int i = 1; i < m_spokes.size(); ++i)
            if (m_spokes[i].end == m_spokes[i - 1].end) connected.unite(m_spokes[i - 1].place, m_spokes[i].place);
        m_fans.clear();
        int count = 0;
        for (int place = 0; place < size(); ++place) {
            const int first = connected.find(place);
            m_fans.append(first == place ? count++ : m_fans[first]);
        }
        return count;
    }
    /// The fan of a triangle.
    int fan(int place) const { return m_fans[place]; }

private:
    const MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
    std::span<const int> m_around;
    zn::vector<Outer> m_outer;
    zn::vector<Spoke> m_spokes; ///< sorted
    zn::vector<int> m_fans;
};

/// Whether some triangles around a vertex make one fan, closed or open, in which no edge has more than two of them. A
/// walk from the last of them goes on as long as exactly one of those not yet passed follows; where none does, it goes
/// on in the other direction.
///
/// \param left  used up; none with the same vertex twice
bool isOneFan(Outer* left, int numLeft)
{
    const Outer start = left[--numLeft];
    int end = start.b;
    for (bool turned = false; numLeft > 0;) {
        int numNext = 0, next = 0;
        for (int i = 0; i < numLeft; ++i) {
            const bool follows = left[i].has(end);
            numNext += follows;
            next = follows ? i : next;
        }
        if (numNext == 1) {
            end = left[next].besides(end);
            left[next] = left[--numLeft];
            if (end == start.a) break;
        } else if (numNext == 0 && !turned) {
            end = start.a;
            turned = true;
        } else {
            return false;
        }
    }
    return numLeft == 0;
}

/// The bad edges that have their lower ends among some vertices, and the bad vertices among these; ascending.
struct Found
{
    zn::vector<std::pair<int, int>> edges;
    zn::vector<int> vertices;
};

/// Looks for bad edges and vertices. Nearly every vertex of a mesh has few triangles that make one fan; the others are
/// looked at more closely.
class FanScan
{
public:
    FanScan(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_triangles(mesh.getTriangles()), m_adjTris(adjTris), m_entries(adjTris.table().elements.read()),
          m_numEntries(adjTris.table().elements.size()), m_fans(m_triangles, adjTris)
    {}

    Found scan(Slice vertices)
    {
        for (int vertex = vertices.begin; vertex < vertices.end; ++vertex)
            if (m_adjTris.numTris(vertex) > 1 && !isPlain(vertex)) judge(vertex);
        return std::move(m_found);
    }

private:
    static constexpr int smallValence = 24;
    /// How many triangles ahead are prefetched, for meshes whose triangles are in no particular order.
    static constexpr int trianglesAhead = 24;

    bool isPlain(int vertex) const
    {
        const int numTris = m_adjTris.numTris(vertex);
        if (numTris > smallValence) return false;
        const auto first = static_cast<int>(m_adjTris.triIndices(vertex) - m_entries);
        std::array<Outer, smallValence> outer;
        for (int i = 0; i < numTris; ++i) {
            if (first + i + trianglesAhead < m_numEntries)
                znUtil::prefetch(m_triangles + m_entries[first + i + trianglesAhead]);
            Outer& added = outer[static_cast<size_t>(i)] = outerVertices(m_triangles[m_entries[first + i]], vertex);
            if (added.a == added.b) return false;
        }
        return isOneFan(outer.data(), numTris);
    }

    void judge(int vertex)
    {
        m_fans.gather(vertex);
        m_fans.forEachBadEdge([this, vertex](std::span<const VertexFans::Spoke> spokes) {
            if (spokes.front().end >= vertex) m_found.edges.append({vertex, spokes.front().end});
        });
        if (m_found.edges.empty() && m_fans.findFans() > 1) m_found.vertices.append(vertex);
    }

    const MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
    const int* m_entries;
    int m_numEntries;
    VertexFans m_fans;
    Found m_found;
};

/// Of the triangles along an edge, selects all but the two whose third vertices have the most triangles.
/// \param spokes  of the edge
void selectSurplus(const VertexFans& fans, std::span<const VertexFans::Spoke> spokes, const MeshAdjTris& adjTris,
                   BitVector& selected)
{
    zn::vector<std::pair<int, int>> ranked; // how many triangles the third vertex has, triangle
    for (int previous = -1; const auto [end, place] : spokes) {
        // A triangle that repeats the far end has two spokes.
        if (place != previous) ranked.append({adjTris.numTris(fans.outer(place).besides(end)), fans.triangle(place)});
        previous = place;
    }
    std::sort(ranked.begin(), ranked.end());
    for (int i = 0; i + 2 < ranked.size(); ++i) selected.setBit(ranked[i].second);
}

void removeSurplusTriangles(CompactMesh& mesh, const MeshAdjTris& adjTris,
                            const zn::vector<std::pair<int, int>>& badEdges)
{
    BitVector& selected = mesh.getSelectedTriangles();
    selected.resize(mesh.getNumTriangles());
    VertexFans fans(mesh.getTriangles(), adjTris);
    for (int previous = -1; const auto& edge : badEdges) {
        const int low = edge.first;
        if (std::exchange(previous, low) == low) continue; // all edges of a fan are done at once
        fans.gather(low);
        fans.forEachBadEdge([&](std::span<const VertexFans::Spoke> spokes) {
            if (spokes.front().end >= low) selectSurplus(fans, spokes, adjTris, selected);
        });
    }
    MeshSelect(mesh, adjTris).selectVerticesFromTriangles();
    MeshDeleteSelected{mesh}();
}

/// Splits vertices, each into as many as it has fans.
class VertexSplit
{
public:
    VertexSplit(CompactMesh& mesh, const MeshAdjTris& adjTris, const BitVector& vertices)
        : m_mesh(mesh), m_triangles(mesh.getTriangles()), m_fans(m_triangles, adjTris),
          m_vertices(listMembers(vertices, mesh.getNumVertices()))
    {}

    void operator()()
    {
        const int numOld = m_mesh.getNumVertices();
        std::int64_t numVertices = numOld;
        for (const int vertex : m_vertices) numVertices += countFans(vertex) - 1;
        if (numVertices == numOld) return;
        m_mesh.resizeVertexArray(zn::checkedSize(numVertices));
        int next = numOld;
        // What was split before does not change the fans of the next: all triangles that share two vertices are in one
        // fan at either of them, and so move together.
        for (const int vertex : m_vertices) next = split(vertex, countFans(vertex), next);
        MeshModification modification(&m_mesh, MeshModification::TopologyChanged);
        m_mesh.modified(modification);
    }

private:
    /// Vertices with a bad edge are not split.
    int countFans(int vertex)
    {
        m_fans.gather(vertex);
        return m_fans.hasBadEdge() ? 1 : std::max(m_fans.findFans(), 1);
    }

    /// \param next  the first new vertex; returns the one after the last
    int split(int vertex, int numFans, int next)
    {
        if (numFans == 1) return next;
        for (int place = 0; place < m_fans.size(); ++place) {
            if (m_fans.fan(place) == 0) continue;
            for (int& corner : m_triangles[m_fans.triangle(place)].corners)
                if (corner == vertex) corner = next + m_fans.fan(place) - 1;
        }
        MeshVertex* const positions = m_mesh.getVertices();
        std::fill_n(positions + next, numFans - 1, positions[vertex]);
        return next + numFans - 1;
    }

    CompactMesh& m_mesh;
    MeshTriangle* m_triangles;
    VertexFans m_fans;
    zn::vector<int> m_vertices;
};

} // namespace

void meshManifold(const CompactMesh& mesh, const MeshAdjTris& adjTris, MeshManifoldResult& result, ThreadPool& pool)
{
    znOS::StopWatch watch;
    Found found = znUtil::parallelReduce(
        pool, mesh.getNumVertices(), Found(), [&](Slice slice) { return FanScan(mesh, adjTris).scan(slice); },
        [](Found& all, Found& part) {
            all.edges.append(part.edges);
            all.vertices.append(part.vertices);
        });
    result.badEdges.swap(found.edges);
    result.badVertices.resize(mesh.getNumVertices());
    result.badVertices.clearBits();
    if (result.badEdges.empty()) result.badVertices.setBits(found.vertices.size(), found.vertices.data());
    debugChannel().print("meshManifold:  vertices %d  triangles %d: %f s\n"
                         "               badVertexAdj(%d) badEdgeAdj(%d)\n",
                         mesh.getNumVertices(), mesh.getNumTriangles(), watch.stop(),
                         result.badVertices.getNumSetBits(), result.badEdges.size());
}

void meshMakeManifold(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshManifoldResult& result)
{
    if (!result.badEdges.empty())
        removeSurplusTriangles(mesh, adjTris, result.badEdges);
    else if (result.badVertices.getNumSetBits() > 0)
        VertexSplit(mesh, adjTris, result.badVertices)();
}

void meshMakeManifold(CompactMesh& mesh)
{
    for (int numVertices = -1, numTriangles = -1;
         numVertices != mesh.getNumVertices() || numTriangles != mesh.getNumTriangles();) {
        numVertices = mesh.getNumVertices();
        numTriangles = mesh.getNumTriangles();
        MeshAdjTris adjTris;
        meshAdjTris(mesh, adjTris);
        MeshManifoldResult result;
        meshManifold(mesh, adjTris, result);
        meshMakeManifold(mesh, adjTris, result);
    }
}

} // namespace znGeom
