#include "znGeom/analysis/edge_sides.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/counting_sort.h"
#include "znGeom/foundation/threads/internal/pieces.h"

namespace znGeom {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// The other vertex of a side as its lower one sees it, and the side: in one number, which sorts by the vertex first.
using SeenSide = std::uint64_t;

SeenSide seenSide(int high, int side) { return SeenSide(std::uint32_t(high)) << 32 | std::uint32_t(side); }
int highOf(SeenSide seen) { return static_cast<int>(seen >> 32); }
int sideOf(SeenSide seen) { return static_cast<int>(seen & 0xFFFFFFFFu); }

/// The sides of all triangles, gathered by their lower vertices.
class SideBuckets
{
public:
    explicit SideBuckets(const CompactMesh& mesh)
        : m_numSides(zn::checkedSize(std::int64_t{3} * mesh.getNumTriangles())), m_corners(mesh.getTrianglesRaw()),
          m_starts(mesh.getNumVertices() + 1),
          m_seen(std::make_unique_for_overwrite<SeenSide[]>(static_cast<size_t>(m_numSides)))
    {
        ThreadPool& pool = ThreadPool::get();
        znUtil::CountingSort sort(pool, m_starts.size());
        const auto visit = [this, &pool](int thread, const auto& take) {
            forEachSide(Slice(m_numSides, thread, pool.getNumThreads()), take);
        };
        sort.count(visit, m_starts.data());
        sort.place(visit, [this](int place, SeenSide seen) { m_seen[static_cast<size_t>(place)] = seen; });
    }

    int numSides() const { return m_numSides; }

    /// The sides of one bucket by their other vertices, those of one edge ascending.
    std::span<const SeenSide> sorted(int vertex)
    {
        SeenSide *first = m_seen.get() + m_starts[vertex], *last = m_seen.get() + m_starts[vertex + 1];
        std::sort(first, last);
        return {first, last};
    }

private:
    template <typename Take>
    void forEachSide(Slice slice, const Take& take) const
    {
        for (int side = slice.begin; side < slice.end; ++side) {
            const int from = m_corners[side], to = m_corners[cornerAtSideEnd(side)];
            if (from != to) take(std::min(from, to), seenSide(std::max(from, to), side));
        }
    }

    int m_numSides;
    const int* m_corners;
    zn::vector<int> m_starts; ///< per vertex the beginning of its bucket, and the end of the last one
    std::unique_ptr<SeenSide[]> m_seen;
};

/// The table, written from the front.
class TableWriter
{
public:
    explicit TableWriter(int numSides)
        : m_table(numSides, numSides), m_start(m_table.start.write()), m_elements(m_table.elements.write())
    {}

    /// \param sides  of one lower vertex
    void append(std::span<const SeenSide> sides)
    {
        for (int high = -1; const SeenSide seen : sides) {
            if (highOf(seen) != high) m_start[m_numEdges++] = m_numSides;
            high = highOf(seen);
            m_elements[m_numSides++] = sideOf(seen);
        }
    }

    ArrayOfSets take()
    {
        m_table.start.resize(m_numEdges);
        m_table.elements.resize(m_numSides);
        return std::move(m_table);
    }

private:
    ArrayOfSets m_table;
    int *m_start, *m_elements;
    int m_numEdges = 0, m_numSides = 0;
};

} // namespace

bool meshEdgeSides(const CompactMesh& mesh, znUtil::Progress& progress, MeshEdgeSides& result)
{
    if (progress.cancelled()) return false;
    znOS::StopWatch watch;
    SideBuckets buckets(mesh);
    TableWriter writer(buckets.numSides());
    const auto append = [&](int begin, int end) {
        for (int vertex = begin; vertex < end; ++vertex) writer.append(buckets.sorted(vertex));
    };
    if (!internal::forEachPiece(mesh.getNumVertices(), progress, append)) return false;

    ArrayOfSets table = writer.take();
    MeshEdgeSides built(table);
    result.swap(built);
    debugChannel().print("meshEdgeSides: %d edges %f s\n", result.getNumEdges(), watch.stop());
    return true;
}

} // namespace znGeom
