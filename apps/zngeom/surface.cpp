#include "apps/zngeom/surface.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

#include "apps/zngeom/disjoint_sets.h"
#include "apps/zngeom/pacer.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/components.h"
#include "znGeom/foundation/mesh/bit_vector.h"

namespace tool {

namespace {

int cornerAfter(int corner) { return corner % 3 == 2 ? corner - 2 : corner + 1; }

std::size_t at(int index) { return static_cast<std::size_t>(index); }

/// Numbers components by size.
/// \param labels  per triangle something that tells its component from others
Components sortedBySize(const std::vector<int>& labels, int numLabels)
{
    std::vector<int> numberOf(at(numLabels), -1), sizes;
    Components result;
    for (const int label : labels) {
        int& number = numberOf[at(label)];
        if (number < 0) {
            number = static_cast<int>(sizes.size());
            sizes.push_back(0);
        }
        result.ofTriangle.push_back(number);
        ++sizes[at(number)];
    }

    std::vector<int> order(sizes.size()), rank(sizes.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&sizes](int a, int b) { return sizes[at(a)] > sizes[at(b)]; });
    for (const int number : order) {
        rank[at(number)] = result.count();
        result.sizes.push_back(sizes[at(number)]);
    }
    for (int& number : result.ofTriangle) number = rank[at(number)];
    return result;
}

/// Strings boundary edges together, from fan to fan. A fan of a manifold surface has two of them or none.
class LoopTracer
{
public:
    LoopTracer(const znGeom::CompactMesh& mesh, const std::vector<int>& fans, const std::vector<int>& sides)
        : m_mesh(mesh), m_fans(fans), m_sides(sides), m_used(sides.size()), m_first(fans.size(), -1),
          m_next(2 * sides.size())
    {
        for (int end = static_cast<int>(m_next.size()) - 1; end >= 0; --end)
            m_next[at(end)] = std::exchange(m_first[at(fanAt(end))], end);
    }

    std::vector<BoundaryLoop> trace()
    {
        // What doesn't close begins where an odd number of edges meet; begun elsewhere it would come out in pieces.
        std::vector<bool> odd(m_fans.size());
        for (int end = 0; end < static_cast<int>(m_next.size()); ++end) odd[at(fanAt(end))].flip();
        walkFromEnds([&](int end) { return odd[at(fanAt(end))]; });
        walkFromEnds([](int) { return true; });
        return std::move(m_loops);
    }

private:
    // Side s has the ends 2 * s and 2 * s + 1.
    int cornerAt(int end) const { return end % 2 == 0 ? m_sides[at(end / 2)] : cornerAfter(m_sides[at(end / 2)]); }
    int fanAt(int end) const { return m_fans[at(cornerAt(end))]; }
    int vertexAt(int end) const { return m_mesh.getTrianglesRaw()[cornerAt(end)]; }

    template <typename Begins>
    void walkFromEnds(const Begins& begins)
    {
        for (int end = 0; end < static_cast<int>(m_next.size()); ++end)
            if (!m_used[at(end / 2)] && begins(end)) walkFrom(end);
    }

    void walkFrom(int end)
    {
        BoundaryLoop loop;
        const int start = fanAt(end);
        while (end >= 0 && !loop.closed) {
            m_used[at(end / 2)] = true;
            const int farEnd = end ^ 1;
            loop.vertices.push_back(vertexAt(end));
            loop.length += length(end, farEnd);
            loop.closed = fanAt(farEnd) == start;
            end = unusedAt(fanAt(farEnd));
            if (end < 0 && !loop.closed) loop.vertices.push_back(vertexAt(farEnd));
        }
        m_loops.push_back(std::move(loop));
    }

    /// An end there of a side that no loop has yet; -1 if there is none.
    int unusedAt(int fan)
    {
        int& end = m_first[at(fan)];
        while (end >= 0 && m_used[at(end / 2)]) end = m_next[at(end)];
        return end;
    }

    double length(int end, int farEnd) const
    {
        const znGeom::MeshVertex* vertices = m_mesh.getVertices();
        return (vertices[vertexAt(farEnd)].asPoint() - vertices[vertexAt(end)].asPoint()).length();
    }

    const znGeom::CompactMesh& m_mesh;
    const std::vector<int>& m_fans;
    const std::vector<int>& m_sides;
    std::vector<bool> m_used;
    std::vector<int> m_first, m_next; ///< per fan its first end, and per end the next of the same fan
    std::vector<BoundaryLoop> m_loops;
};

} // namespace

/// A side of a triangle as its lower vertex sees it.
struct Surface::Side
{
    int high;                  ///< the other vertex
    int lowCorner, highCorner; ///< 3 * triangle + corner
    int triangle() const { return lowCorner / 3; }
    bool runsUp() const { return cornerAfter(lowCorner) == highCorner; }
    auto key() const { return std::tuple(high, lowCorner, highCorner); }
};

Surface::Surface(const znGeom::CompactMesh& mesh, znUtil::Progress& progress) : m_mesh(mesh)
{
    znGeom::meshAdjTris(mesh, m_adjTris);
    checkCancelled(progress);
    beginFans();
    Pacer pacer(progress, at(mesh.getNumVertices()));
    std::vector<Side> sides;
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        pacer.at(at(vertex));
        gatherSides(vertex, sides);
        takeEdges(vertex, sides);
    }
    for (int& corner : m_fans) corner = findSet(m_fans, corner);
    countBoundaryVertices();
}

/// Each corner alone; but where a triangle repeats one both are at the same place of the surface.
void Surface::beginFans()
{
    const int numCorners = 3 * m_mesh.getNumTriangles();
    const int* vertexOf = m_mesh.getTrianglesRaw();
    m_fans.resize(at(numCorners));
    std::iota(m_fans.begin(), m_fans.end(), 0);
    for (int corner = 0; corner < numCorners; ++corner)
        if (vertexOf[corner] == vertexOf[cornerAfter(corner)]) uniteSets(m_fans, corner, cornerAfter(corner));
}

/// All sides from a vertex to higher ones, those to the same vertex in a row.
void Surface::gatherSides(int vertex, std::vector<Side>& sides) const
{
    const int* vertexOf = m_mesh.getTrianglesRaw();
    sides.clear();
    int previous = -1;
    for (int i = 0; i < m_adjTris.numTris(vertex); ++i) {
        const int triangle = m_adjTris.triIndices(vertex)[i];
        if (triangle == previous) continue;
        previous = triangle;
        for (int corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
            const int next = cornerAfter(corner);
            if (vertexOf[corner] == vertex && vertexOf[next] > vertex) sides.push_back({vertexOf[next], corner, next});
            if (vertexOf[next] == vertex && vertexOf[corner] > vertex)
                sides.push_back({vertexOf[corner], next, corner});
        }
    }
    std::sort(sides.begin(), sides.end(), [](const Side& a, const Side& b) { return a.key() < b.key(); });
}

void Surface::takeEdges(int low, std::span<const Side> sides)
{
    while (!sides.empty()) {
        std::size_t count = 1;
        while (count < sides.size() && sides[count].high == sides.front().high) ++count;
        takeEdge(low, sides.first(count));
        sides = sides.subspan(count);
    }
}

/// A triangle that has an edge twice, because a corner is repeated, counts once.
void Surface::takeEdge(int low, std::span<const Side> sides)
{
    const Side& first = sides.front();
    int triangles = 1, balance = 0;
    for (std::size_t i = 0; i < sides.size(); ++i) {
        if (i > 0 && sides[i].triangle() != sides[i - 1].triangle()) ++triangles;
        balance += sides[i].runsUp() ? 1 : -1;
        uniteSets(m_fans, first.lowCorner, sides[i].lowCorner);
        uniteSets(m_fans, first.highCorner, sides[i].highCorner);
    }
    ++m_counts.edges;
    if (triangles == 1) {
        ++m_counts.boundary;
        m_boundary.push_back(first.runsUp() ? first.lowCorner : first.highCorner);
    }
    if (triangles >= 3) ++m_counts.nonManifold;
    if (triangles >= 2 && balance != 0) ++m_counts.unbalanced;
    measure(low, first.high);
}

/// All three sides of a triangle alike. The library's longest edge is a reach for searches, in which the third side
/// counts differently on purpose; here people read the length.
void Surface::measure(int from, int to)
{
    const znGeom::MeshVertex* vertices = m_mesh.getVertices();
    const double length = (vertices[to].asPoint() - vertices[from].asPoint()).length();
    if (std::isfinite(length)) m_counts.longest = std::max(m_counts.longest.value_or(0), length);
}

void Surface::countBoundaryVertices()
{
    const int* vertexOf = m_mesh.getTrianglesRaw();
    znGeom::BitVector onBoundary(m_mesh.getNumVertices());
    for (const int side : m_boundary) {
        onBoundary.setBit(vertexOf[side]);
        onBoundary.setBit(vertexOf[cornerAfter(side)]);
    }
    m_counts.boundaryVertices = onBoundary.getNumSetBits();
}

Components Surface::components(Across across) const
{
    const int numTriangles = m_mesh.getNumTriangles();
    std::vector<int> labels(at(numTriangles));
    if (across == Across::Vertices) {
        znGeom::Array<int> ofVertex;
        const int count = znGeom::meshComponents(m_mesh, m_adjTris, &ofVertex);
        for (int i = 0; i < numTriangles; ++i) labels[at(i)] = ofVertex.read()[m_mesh.getTriangles()[i][0]];
        return sortedBySize(labels, count);
    }
    // Fans are connected by their triangles as triangles are by the edges that made the fans.
    std::vector<int> sets = m_fans;
    for (int i = 0; i < numTriangles; ++i) {
        uniteSets(sets, 3 * i, 3 * i + 1);
        uniteSets(sets, 3 * i, 3 * i + 2);
    }
    for (int i = 0; i < numTriangles; ++i) labels[at(i)] = findSet(sets, 3 * i);
    return sortedBySize(labels, 3 * numTriangles);
}

std::vector<BoundaryLoop> Surface::boundaryLoops() const
{
    std::vector<BoundaryLoop> loops = LoopTracer(m_mesh, m_fans, m_boundary).trace();
    // What is not a number would break the order.
    const auto key = [](const BoundaryLoop& loop) { return std::isfinite(loop.length) ? loop.length : -1.0; };
    std::stable_sort(loops.begin(), loops.end(),
                     [&key](const BoundaryLoop& a, const BoundaryLoop& b) { return key(a) > key(b); });
    return loops;
}

} // namespace tool
