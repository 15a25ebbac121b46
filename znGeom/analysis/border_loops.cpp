#include "znGeom/analysis/border_loops.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "znGeom/analysis/path_length.h"
#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/foundation/threads/internal/pieces.h"

namespace znGeom {

namespace {

/// The corners of the triangles, 3 * triangle + corner, in fans: those at one vertex whose triangles hang together over
/// edges there, as far as these were joined.
class CornerFans
{
public:
    explicit CornerFans(const CompactMesh& mesh) : m_corners(mesh.getTrianglesRaw()), m_sets(3 * mesh.getNumTriangles())
    {
        // Where a triangle repeats a vertex both corners are at the same place of the surface.
        for (int corner = 0; corner < m_sets.size(); ++corner)
            if (m_corners[corner] == m_corners[cornerAtSideEnd(corner)]) m_sets.unite(corner, cornerAtSideEnd(corner));
    }

    void join(std::span<const int> sides)
    {
        const int first = sides.front();
        for (const int side : sides.subspan(1)) {
            const bool runsAlike = m_corners[side] == m_corners[first];
            m_sets.unite(first, runsAlike ? side : cornerAtSideEnd(side));
            m_sets.unite(cornerAtSideEnd(first), runsAlike ? cornerAtSideEnd(side) : side);
        }
    }

    int size() const { return m_sets.size(); }
    int find(int corner) { return m_sets.find(corner); }

private:
    const int* m_corners;
    zn::DisjointSets m_sets;
};

/// The boundary edges, which belong to one triangle alone, and their vertices.
class Border
{
public:
    Border(const CompactMesh& mesh, const MeshEdgeSides& edges)
        : m_corners(mesh.getTrianglesRaw()), m_vertices(mesh.getNumVertices())
    {
        for (int edge = 0; edge < edges.getNumEdges(); ++edge) {
            const std::span<const int> around = edges.sides(edge);
            if (around.front() / 3 != around.back() / 3) continue;
            m_sides.append(around.front());
            m_vertices.setBit(m_corners[around.front()]);
            m_vertices.setBit(m_corners[cornerAtSideEnd(around.front())]);
        }
    }

    /// A side of each edge.
    const zn::vector<int>& sides() const { return m_sides; }
    /// Whether an edge has an end there. Fans elsewhere are of no interest.
    bool touches(std::span<const int> sides) const
    {
        return m_vertices[m_corners[sides.front()]] || m_vertices[m_corners[cornerAtSideEnd(sides.front())]];
    }

private:
    const int* m_corners;
    BitVector m_vertices;
    zn::vector<int> m_sides;
};

/// Strings boundary edges together, from fan to fan. A fan of a manifold surface has two of them or none.
class LoopTracer
{
public:
    /// \param sides  a side of each boundary edge
    LoopTracer(const CompactMesh& mesh, CornerFans& fans, const zn::vector<int>& sides)
        : m_corners(mesh.getTrianglesRaw()), m_sides(sides), m_fanOf(2 * sides.size()), m_next(2 * sides.size()),
          m_used(sides.size()), m_first(fans.size(), -1), m_odd(fans.size())
    {
        for (int end = m_next.size() - 1; end >= 0; --end) {
            m_fanOf[end] = fans.find(cornerAt(end));
            m_next[end] = std::exchange(m_first[m_fanOf[end]], end);
            m_odd[m_fanOf[end]] = !m_odd[m_fanOf[end]];
        }
    }

    void trace()
    {
        // What doesn't close begins where an odd number of edges are left; begun elsewhere it would come out in pieces.
        walkFromEnds([this](int end) { return m_odd[m_fanOf[end]]; });
        walkFromEnds([](int) { return true; });
    }

    // What was found, loop after loop.
    const zn::vector<int>& vertices() const { return m_vertices; }
    const zn::vector<int>& counts() const { return m_counts; }
    const zn::vector<bool>& closed() const { return m_closed; }

private:
    // Side s has the ends 2 * s and 2 * s + 1.
    int cornerAt(int end) const { return end % 2 == 0 ? m_sides[end / 2] : cornerAtSideEnd(m_sides[end / 2]); }
    int vertexAt(int end) const { return m_corners[cornerAt(end)]; }

    template <typename Begins>
    void walkFromEnds(const Begins& begins)
    {
        for (int end = 0; end < m_next.size(); ++end)
            if (!m_used[end / 2] && begins(end)) walkFrom(end);
    }

    void walkFrom(int end)
    {
        const int start = m_fanOf[end], before = m_vertices.size();
        int fan = -1;
        while (end >= 0 && fan != start) {
            m_used[end / 2] = true;
            m_vertices.append(vertexAt(end));
            const int farEnd = end ^ 1;
            fan = m_fanOf[farEnd];
            end = unusedAt(fan);
            if (end < 0 && fan != start) m_vertices.append(vertexAt(farEnd));
        }
        const bool closed = fan == start;
        if (!closed) m_odd[start] = m_odd[fan] = false;
        m_counts.append(m_vertices.size() - before);
        m_closed.append(closed);
    }

    /// An end there of a side that no loop has yet; -1 if there is none.
    int unusedAt(int fan)
    {
        int& end = m_first[fan];
        while (end >= 0 && m_used[end / 2]) end = m_next[end];
        return end;
    }

    const int* m_corners;
    const zn::vector<int>& m_sides;
    zn::vector<int> m_fanOf, m_next; ///< per end its fan, and the next end of the same fan
    zn::vector<bool> m_used;
    zn::vector<int> m_first; ///< per fan its first end
    zn::vector<bool> m_odd;  ///< per fan whether an odd number of its ends are in no loop yet
    zn::vector<int> m_vertices, m_counts;
    zn::vector<bool> m_closed;
};

/// The numbers of the loops in the order in which they are told.
zn::vector<int> orderLoops(const MeshBoundaries& loops, const zn::vector<double>& lengths)
{
    zn::vector<std::pair<double, int>> keys(loops.size());
    for (int i = 0; i < loops.size(); ++i)
        // What is not a number would break the order.
        keys[i] = {std::isfinite(lengths[i]) ? -lengths[i] : 1.0,
                   *std::min_element(loops.getStart(i), loops.getEnd(i))};
    zn::vector<int> order(loops.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&keys](int a, int b) { return keys[a] < keys[b]; });
    return order;
}

MeshBorderLoops sortedLoops(const CompactMesh& mesh, const LoopTracer& tracer)
{
    MeshSequence found(tracer.vertices(), tracer.counts());
    const MeshBoundaries loops(found);
    zn::vector<double> foundLengths;
    for (int i = 0; i < loops.size(); ++i)
        foundLengths.append(meshPathLength(mesh, {loops.getStart(i), loops.getEnd(i)}, tracer.closed()[i]));

    zn::vector<int> vertices, counts;
    zn::vector<bool> closed;
    zn::vector<double> lengths;
    for (const int loop : orderLoops(loops, foundLengths)) {
        vertices.append(zn::vector<int>(loops.getStart(loop), loops.getEnd(loop)));
        counts.append(loops.getLength(loop));
        closed.append(tracer.closed()[loop]);
        lengths.append(foundLengths[loop]);
    }
    MeshSequence sequence(vertices, counts);
    return {sequence, std::move(closed), std::move(lengths)};
}

} // namespace

bool meshBorderLoops(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                     MeshBorderLoops& result)
{
    if (progress.cancelled()) return false;
    const Border border(mesh, sides);
    if (border.sides().empty()) {
        result = MeshBorderLoops();
        return true;
    }
    CornerFans fans(mesh);
    const auto join = [&](int begin, int end) {
        for (int edge = begin; edge < end; ++edge)
            if (border.touches(sides.sides(edge))) fans.join(sides.sides(edge));
    };
    if (!internal::forEachPiece(sides.getNumEdges(), progress, join)) return false;
    LoopTracer tracer(mesh, fans, border.sides());
    tracer.trace();
    MeshBorderLoops loops = sortedLoops(mesh, tracer);
    result.swap(loops);
    return true;
}

} // namespace znGeom
