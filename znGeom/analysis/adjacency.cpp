#include "znGeom/analysis/adjacency.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/containers/stamp_table.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

namespace {

int countCorners(const CompactMesh& mesh) { return zn::checkedSize(std::int64_t{3} * mesh.getNumTriangles()); }

/// Each entry becomes the sum of all entries up to and including it.
void inclusiveSum(int* counts, int size)
{
    int total = 0;
    for (int i = 0; i < size; ++i) counts[i] = total += counts[i];
}

struct FreeMalloc
{
    void operator()(int* block) const { std::free(block); }
};
using MallocBlock = std::unique_ptr<int, FreeMalloc>;

MallocBlock allocateInts(size_t count)
{
    MallocBlock block(static_cast<int*>(std::malloc(std::max<size_t>(count, 1) * sizeof(int))));
    if (!block) throw std::bad_alloc();
    return block;
}

/// Frees everything after the first `count` numbers.
void cutInts(MallocBlock& block, size_t count)
{
    void* cut = std::realloc(block.get(), std::max<size_t>(count, 1) * sizeof(int));
    if (!cut) return;
    block.release();
    block.reset(static_cast<int*>(cut));
}

/// How many triangles ahead the corners, and how many ahead their stamps, are prefetched: meshes whose triangles are in
/// no particular order would otherwise wait for memory at every corner.
constexpr int cornersAhead = 48, stampsAhead = 24;

/// Writes the record of each vertex, its neighbour count and then the neighbours, one after the other.
class NeighbourRecords
{
public:
    NeighbourRecords(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_corners(mesh.getTrianglesRaw()), m_tris(adjTris.table().elements.read()),
          m_numTris(adjTris.table().elements.size()), m_stamps(mesh.getNumVertices())
    {}

    /// \param record  room for the largest record that a vertex of `numTris` triangles can have, and one more
    /// \return the end of the record
    int* write(int vertex, int firstTri, int numTris, int* record)
    {
        const std::uint32_t stamp = m_stamps.next();
        m_stamps.mark(vertex, stamp);
        int* next = record + 1;
        for (int i = firstTri; i < firstTri + numTris; ++i) {
            prefetchFrom(i);
            const int* corners = cornersOf(i);
            for (int corner = 0; corner < 3; ++corner) {
                // Always written, and kept by moving on: a test here would be mispredicted half the time.
                *next = corners[corner];
                next += m_stamps.mark(corners[corner], stamp);
            }
        }
        *record = static_cast<int>(next - record) - 1;
        return next;
    }

private:
    const int* cornersOf(int entry) const { return m_corners + 3 * static_cast<std::ptrdiff_t>(m_tris[entry]); }

    void prefetchFrom(int entry) const
    {
        if (entry + cornersAhead >= m_numTris) return;
        znUtil::prefetch(cornersOf(entry + cornersAhead));
        const int* corners = cornersOf(entry + stampsAhead);
        for (int corner = 0; corner < 3; ++corner) m_stamps.prefetch(corners[corner]);
    }

    const int* m_corners;
    const int* m_tris;
    int m_numTris;
    zn::StampTable m_stamps;
};

} // namespace

void meshAdjTris(const CompactMesh& mesh, MeshAdjTris& result)
{
    znOS::StopWatch watch;
    const int numVertices = mesh.getNumVertices(), numCorners = countCorners(mesh);
    const int* corners = mesh.getTrianglesRaw();
    ArrayOfSets table(numVertices, numCorners);
    int *start = table.start.write(), *elements = table.elements.write();

    std::fill_n(start, numVertices, 0);
    for (int i = 0; i < numCorners; ++i) ++start[corners[i]];
    // From the ends of the sets downwards, so that the cursors come to rest at the starts.
    inclusiveSum(start, numVertices);
    for (int triangle = mesh.getNumTriangles() - 1; triangle >= 0; --triangle) {
        const int* triangleCorners = corners + 3 * static_cast<std::ptrdiff_t>(triangle);
        elements[--start[triangleCorners[2]]] = triangle;
        elements[--start[triangleCorners[1]]] = triangle;
        elements[--start[triangleCorners[0]]] = triangle;
    }

    MeshAdjTris built(table);
    result.swap(built);
    debugChannel().print("MeshAdjTris: %d vertices %d triangles %f\n", numVertices, mesh.getNumTriangles(),
                         watch.stop());
}

void meshAdjVertices(const CompactMesh& mesh, const MeshAdjTris& adjTris, MeshAdjVertices& result)
{
    znOS::StopWatch watch;
    const int numVertices = mesh.getNumVertices();
    const size_t numEntries = static_cast<size_t>(adjTris.table().elements.size());
    NeighbourRecords records(mesh, adjTris);

    // One pass into a block for the worst case, two neighbours for every triangle of a vertex, which is then cut to its
    // size: pages that were never touched have cost nothing.
    MallocBlock offsets = allocateInts(static_cast<size_t>(numVertices));
    MallocBlock data = allocateInts(static_cast<size_t>(numVertices) + 2 * numEntries + 1);
    int* end = data.get();
    int maxCount = 0, firstTri = 0;
    for (int v = 0; v < numVertices; ++v) {
        int* record = end;
        offsets.get()[v] = zn::checkedSize(record - data.get());
        end = records.write(v, firstTri, adjTris.numTris(v), record);
        firstTri += adjTris.numTris(v);
        maxCount = std::max(maxCount, *record);
    }
    cutInts(data, static_cast<size_t>(end - data.get()));

    MeshAdjVertices built(numVertices, maxCount, offsets.release(), data.release());
    result.swap(built);
    debugChannel().print("MeshAdjVertices: %d vertices, %d triangles: %f s\n", numVertices, mesh.getNumTriangles(),
                         watch.stop());
}

void sortAdjTris(int vertex, int count, const int* tris, const MeshTriangle* triangles, zn::vector<int>& sorted)
{
    sorted = zn::vector<int>(tris, tris + count);
    for (int i = 0; i + 1 < count; ++i) {
        const MeshTriangle& triangle = triangles[sorted[i]];
        const int target = triangle[cornerBefore(std::max(cornerOf(triangle, vertex), 0))];
        for (int j = i + 1; j < count; ++j) {
            if (!hasDirectedEdge(triangles[sorted[j]], vertex, target)) continue;
            std::swap(sorted[i + 1], sorted[j]);
            break;
        }
    }
}

bool getSharedEdgeAdjacentTriangle(const int& triangle, int edge, const MeshTriangle* triangles,
                                   const MeshAdjTris& adjTris, int& neighbour, int& neighbourCorner)
{
    neighbourCorner = -1;
    const int start = triangles[triangle][edge], end = triangles[triangle][cornerAfter(edge)];
    for (const int candidate : adjTris.around(start)) {
        const int corner = cornerOf(triangles[candidate], end);
        if (candidate == triangle || corner < 0) continue;
        neighbourCorner = corner;
        neighbour = candidate;
        return true;
    }
    return false;
}

} // namespace znGeom
