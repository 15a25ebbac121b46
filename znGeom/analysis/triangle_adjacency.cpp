#include <algorithm>
#include <cstdint>
#include <memory>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

namespace {

/// An undirected edge of a triangle.
struct Edge
{
    int low, high;

    Edge(const int* corners, int slot)
    {
        const int a = corners[slot], b = corners[cornerAfter(slot)];
        low = std::min(a, b);
        high = std::max(a, b);
    }
};

/// Matches triangle edges that have the same two vertices.
///
/// Each edge, numbered 3 * triangle + slot, is entered in ascending order into the bucket of its lower vertex and
/// compared with the few that are already there. Pairs, nearly all edges of a real mesh, are noted on the spot; groups
/// that are not plain pairs are marked and looked up in their bucket again. A bucket of very many edges is not searched
/// while it grows but sorted when it is full.
class EdgeMatcher
{
public:
    static constexpr int single = -1; ///< the edge has no partner
    static constexpr int shared = -2; ///< ask `forEachShared`

    explicit EdgeMatcher(const CompactMesh& mesh)
        : m_numVertices(mesh.getNumVertices()), m_numTriangles(mesh.getNumTriangles()),
          m_corners(mesh.getTrianglesRaw()), m_buckets(std::make_unique<Bucket[]>(static_cast<size_t>(m_numVertices))),
          m_entries(std::make_unique_for_overwrite<Entry[]>(3 * static_cast<size_t>(m_numTriangles))),
          m_partners(std::make_unique_for_overwrite<int[]>(3 * static_cast<size_t>(m_numTriangles)))
    {
        sizeBuckets();
        for (int triangle = 0; triangle < m_numTriangles; ++triangle) {
            prefetchFrom(triangle);
            for (int slot = 0; slot < 3; ++slot) enter(triangle, slot);
        }
        if (m_hasLargeBuckets) matchLargeBuckets();
    }

    /// The one edge with the same vertices, of another triangle; or one of the marks above.
    int partner(int triangle, int slot) const { return m_partners[edgeNumber(triangle, slot)]; }

    /// For an edge that is `shared`: calls `visit` with the triangle of each edge of its group, its own included, in
    /// ascending order of edges.
    template <typename Visit>
    void forEachShared(int triangle, int slot, const Visit& visit) const
    {
        const Edge edge(cornersOf(triangle), slot);
        const Bucket& bucket = m_buckets[static_cast<size_t>(edge.low)];
        const Entry *entry = begin(bucket), *last = end(bucket);
        if (isLarge(bucket)) entry = std::lower_bound(entry, last, Entry{edge.high, 0});
        for (; entry != last; ++entry) {
            if (entry->high == edge.high)
                visit(entry->edge / 3);
            else if (isLarge(bucket))
                break;
        }
    }

private:
    struct Bucket
    {
        int begin = 0, end = 0;
        int capacity = 0;
    };
    struct Entry
    {
        int high, edge;
        friend bool operator<(const Entry& a, const Entry& b)
        {
            return a.high != b.high ? a.high < b.high : a.edge < b.edge;
        }
    };

    static constexpr int largeBucket = 64;
    static constexpr int bucketsAhead = 16, entriesAhead = 8;

    static bool isLarge(const Bucket& bucket) { return bucket.capacity > largeBucket; }
    static size_t edgeNumber(int triangle, int slot)
    {
        return 3 * static_cast<size_t>(triangle) + static_cast<size_t>(slot);
    }
    const int* cornersOf(int triangle) const { return m_corners + 3 * static_cast<std::ptrdiff_t>(triangle); }
    Entry* begin(const Bucket& bucket) const { return m_entries.get() + bucket.begin; }
    Entry* end(const Bucket& bucket) const { return m_entries.get() + bucket.end; }

    void sizeBuckets()
    {
        for (int triangle = 0; triangle < m_numTriangles; ++triangle)
            for (int slot = 0; slot < 3; ++slot)
                ++m_buckets[static_cast<size_t>(Edge(cornersOf(triangle), slot).low)].capacity;
        int total = 0;
        for (int v = 0; v < m_numVertices; ++v) {
            Bucket& bucket = m_buckets[static_cast<size_t>(v)];
            bucket.begin = bucket.end = total;
            total += bucket.capacity;
            m_hasLargeBuckets = m_hasLargeBuckets || isLarge(bucket);
        }
    }

    void prefetchFrom(int triangle) const
    {
        if (triangle + bucketsAhead >= m_numTriangles) return;
        for (int slot = 0; slot < 3; ++slot) {
            znUtil::prefetch(&m_buckets[static_cast<size_t>(Edge(cornersOf(triangle + bucketsAhead), slot).low)]);
            znUtil::prefetch(begin(m_buckets[static_cast<size_t>(Edge(cornersOf(triangle + entriesAhead), slot).low)]));
        }
    }

    void enter(int triangle, int slot)
    {
        const Edge edge(cornersOf(triangle), slot);
        Bucket& bucket = m_buckets[static_cast<size_t>(edge.low)];
        const int number = static_cast<int>(edgeNumber(triangle, slot));
        int match = single;
        if (!isLarge(bucket))
            for (const Entry* entry = begin(bucket); entry != end(bucket); ++entry)
                match = entry->high == edge.high ? entry->edge : match;
        *end(bucket) = {edge.high, number};
        ++bucket.end;
        m_partners[static_cast<size_t>(number)] = match;
        if (match != single) pair(number, match, bucket);
    }

    /// Notes a pair, or marks the whole group when it is more than a pair of two triangles.
    void pair(int number, int match, const Bucket& bucket)
    {
        int& ofMatch = m_partners[static_cast<size_t>(match)];
        if (ofMatch == single && match / 3 != number / 3) {
            ofMatch = number;
            return;
        }
        const int high = (end(bucket) - 1)->high;
        for (const Entry* entry = begin(bucket); entry != end(bucket); ++entry)
            if (entry->high == high) m_partners[static_cast<size_t>(entry->edge)] = shared;
    }

    void matchLargeBuckets()
    {
        for (int v = 0; v < m_numVertices; ++v) {
            const Bucket& bucket = m_buckets[static_cast<size_t>(v)];
            if (!isLarge(bucket)) continue;
            std::sort(begin(bucket), end(bucket));
            for (Entry *run = begin(bucket), *next = run; run != end(bucket); run = next) {
                while (next != end(bucket) && next->high == run->high) ++next;
                matchRun(run, next);
            }
        }
    }

    void matchRun(const Entry* run, const Entry* runEnd)
    {
        const bool isPair = runEnd - run == 2 && run[0].edge / 3 != run[1].edge / 3;
        if (isPair) {
            m_partners[static_cast<size_t>(run[0].edge)] = run[1].edge;
            m_partners[static_cast<size_t>(run[1].edge)] = run[0].edge;
        } else if (runEnd - run > 1) {
            for (; run != runEnd; ++run) m_partners[static_cast<size_t>(run->edge)] = shared;
        }
    }

    int m_numVertices, m_numTriangles;
    const int* m_corners;
    bool m_hasLargeBuckets = false;
    std::unique_ptr<Bucket[]> m_buckets; ///< one per vertex
    std::unique_ptr<Entry[]> m_entries;  ///< the buckets, one after the other
    std::unique_ptr<int[]> m_partners;   ///< one per edge
};

/// An array that is written from the front. It always has room for one number per edge that is still to come, so that
/// only groups beyond plain pairs ask for more.
class NeighbourList
{
public:
    explicit NeighbourList(int numEdges) : m_elements(numEdges + 1), m_next(m_elements.write()) {}

    int size() { return static_cast<int>(m_next - m_elements.write()); }
    /// Appends one number, or nothing; without a branch.
    void appendIf(bool condition, int triangle)
    {
        *m_next = triangle;
        m_next += condition;
    }
    /// Appends one number of a group, such that room for `edgesLeft` numbers stays free after it.
    void appendShared(int triangle, int edgesLeft)
    {
        const int count = size();
        if (m_elements.size() - count <= edgesLeft + 1) {
            m_elements.resize(zn::checkedSize(std::int64_t{2} * m_elements.size() + edgesLeft));
            m_next = m_elements.write() + count;
        }
        *m_next++ = triangle;
    }
    Array<int> take()
    {
        m_elements.resize(size());
        return std::move(m_elements);
    }

private:
    Array<int> m_elements;
    int* m_next;
};

/// Appends what lies across one edge.
void appendAcross(const EdgeMatcher& edges, int triangle, int slot, int edgesLeft, NeighbourList& neighbours)
{
    const int partner = edges.partner(triangle, slot);
    neighbours.appendIf(partner >= 0, partner / 3);
    if (partner != EdgeMatcher::shared) return;
    edges.forEachShared(triangle, slot, [&neighbours, triangle, edgesLeft](int other) {
        if (other != triangle) neighbours.appendShared(other, edgesLeft);
    });
}

} // namespace

void meshTriAdjTris(const CompactMesh& mesh, MeshTriAdjTris& result)
{
    znOS::StopWatch watch;
    const int numTriangles = mesh.getNumTriangles();
    const int numEdges = zn::checkedSize(std::int64_t{3} * numTriangles + 1) - 1;
    const EdgeMatcher edges(mesh);

    ArrayOfSets table;
    table.start.resize(numTriangles);
    int* start = table.start.write();
    NeighbourList neighbours(numEdges);
    for (int triangle = 0; triangle < numTriangles; ++triangle) {
        start[triangle] = neighbours.size();
        for (int slot = 0; slot < 3; ++slot)
            appendAcross(edges, triangle, slot, numEdges - 3 * triangle - slot, neighbours);
    }
    table.elements = neighbours.take();

    MeshTriAdjTris built(table);
    result.swap(built);
    debugChannel().print("MeshTriAdjTris: %d vertices %d triangles %f\n", mesh.getNumVertices(), numTriangles,
                         watch.stop());
}

} // namespace znGeom
