#include "znGeom/analysis/edge_sides.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/internal/pieces.h"

namespace znGeom {

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
          m_ends(mesh.getNumVertices() + 1, 0),
          m_seen(std::make_unique_for_overwrite<SeenSide[]>(static_cast<size_t>(m_numSides)))
    {
        // Counted one place further on, so that filling moves each bucket's number from its beginning to its end.
        int* ends = m_ends.data();
        forEachSide([ends](int low, int, int) { ++ends[low + 1]; });
        for (int v = 1; v < m_ends.size(); ++v) ends[v] += ends[v - 1];
        forEachSide([this, ends](int low, int high, int side) {
            m_seen[static_cast<size_t>(ends[low]++)] = seenSide(high, side);
        });
    }

    int numSides() const { return m_numSides; }

    /// The sides of one bucket by their other vertices, those of one edge ascending.
    std::span<const SeenSide> sorted(int vertex)
    {
        SeenSide* first = m_seen.get() + (vertex == 0 ? 0 : m_ends[vertex - 1]);
        SeenSide* last = m_seen.get() + m_ends[vertex];
        std::sort(first, last);
        return {first, last};
    }

private:
    template <typename Visit>
    void forEachSide(const Visit& visit) const
    {
        for (int side = 0; side < m_numSides; ++side) {
            const int from = m_corners[side], to = m_corners[cornerAtSideEnd(side)];
            if (from != to) visit(std::min(from, to), std::max(from, to), side);
        }
    }

    int m_numSides;
    const int* m_corners;
    zn::vector<int> m_ends; ///< per vertex the end of its bucket
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
