#include "znGeom/editing/triangles.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/counting_sort.h"

namespace znGeom {

namespace {

/// How many triangles the fans of all polygons have.
int countFanTriangles(const int* lengths, int numPolys)
{
    std::int64_t count = 0;
    for (int i = 0; i < numPolys; ++i) count += std::max(lengths[i] - 2, 0);
    return zn::checkedSize(count);
}

/// Writes the fan of each polygon, and for each triangle its polygon.
void writeFans(const int* lengths, const int* points, int numPolys, int* corners, int* polygonOf)
{
    for (int polygon = 0; polygon < numPolys; points += lengths[polygon++]) {
        for (int i = 2; i < lengths[polygon]; ++i) {
            *corners++ = points[0];
            *corners++ = points[i - 1];
            *corners++ = points[i];
            *polygonOf++ = polygon;
        }
    }
}

/// Groups the sides of the triangles by their lower vertices.
///
/// \param highs  gets the higher vertex of each side, those of the lowest vertex first
/// \return for each vertex where its group begins, and the end of the last one
zn::vector<int> groupSides(const CompactMesh& mesh, int* highs)
{
    znUtil::ThreadPool& pool = znUtil::ThreadPool::get();
    const MeshTriangle* triangles = mesh.getTriangles();
    const int numTriangles = mesh.getNumTriangles(), numThreads = pool.getNumThreads();
    const auto visit = [=](int thread, const auto& take) {
        const znUtil::Slice slice(numTriangles, thread, numThreads);
        for (int t = slice.begin; t < slice.end; ++t)
            for (int corner = 0; corner < 3; ++corner) {
                const int from = triangles[t][corner], to = triangles[t][cornerAfter(corner)];
                take(std::min(from, to), std::max(from, to));
            }
    };
    zn::vector<int> starts(mesh.getNumVertices() + 1);
    znUtil::CountingSort sort(pool, starts.size());
    sort.count(visit, starts.data());
    sort.place(visit, [highs](int place, int high) { highs[place] = high; });
    return starts;
}

} // namespace

void meshTriangulate(CompactMesh& mesh)
{
    Remap unused;
    meshTriangulate(mesh, unused);
}

void meshTriangulate(CompactMesh& mesh, Remap& remap)
{
    if (mesh.getNumTriangles() > 0 || mesh.getNumPolys() == 0) return;
    const int* lengths = mesh.getPolyLengths();
    const int numTriangles = countFanTriangles(lengths, mesh.getNumPolys());
    remap.resize(numTriangles, mesh.getNumPolys());
    if (numTriangles == 0) return;
    mesh.resizeTriangleArray(numTriangles);
    writeFans(lengths, mesh.getPolyPoints(), mesh.getNumPolys(), mesh.getTrianglesRaw(), remap.data());

    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    modification.normalsValid();
    modification.uvsValid();
    modification.stsValid();
    modification.coloursValid();
    mesh.modified(modification);
}

void meshTrianglesAsLines(const CompactMesh& mesh, int& count, int*& lines)
{
    count = 0;
    lines = nullptr;
    if (mesh.getNumTriangles() == 0) return;
    const int numSides = zn::checkedSize(std::int64_t{3} * mesh.getNumTriangles());
    lines = static_cast<int*>(std::malloc(2 * static_cast<size_t>(numSides) * sizeof(int)));
    if (!lines) throw std::bad_alloc();

    // The groups lie in the second half of the block: the lines, written from its front, never get ahead of them.
    int *const highs = lines + numSides, *next = lines;
    const zn::vector<int> starts = groupSides(mesh, highs);
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        int *const first = highs + starts[vertex], *const end = highs + starts[vertex + 1];
        std::sort(first, end);
        for (int *high = first, previous = -1; high != end; ++high) {
            if (*high == previous) continue;
            previous = *high;
            *next++ = vertex;
            *next++ = previous;
        }
    }
    count = static_cast<int>((next - lines) / 2);
}

} // namespace znGeom
