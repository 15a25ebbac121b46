#include "znGeom/spatial/trees/internal/triangle_order.h"

#include <algorithm>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/spatial/trees/internal/halving_order.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// What each thread has found in its slice of the triangles.
struct FoundRecords
{
    int count = 0;
    BoundingBox box;
};

/// The middle of the box of each triangle whose corners are finite, from the beginning of each slice on.
class TriangleRecords
{
public:
    TriangleRecords(const CompactMesh& mesh, ThreadPool& pool)
        : m_mesh(mesh), m_records(makeAlignedArray<PointRecord>(static_cast<size_t>(mesh.getNumTriangles())))
    {
        const int numTriangles = mesh.getNumTriangles();
        zn::vector<FoundRecords> found(pool.getNumThreads());
        znUtil::parallelFor(pool, numTriangles,
                            [&](Slice slice, int threadIndex) { found[threadIndex] = list(slice); });
        for (int thread = 0; thread < found.size(); ++thread) {
            const PointRecord* from = m_records.get() + Slice(numTriangles, thread, found.size()).begin;
            if (from != m_records.get() + count) std::copy_n(from, found[thread].count, m_records.get() + count);
            count += found[thread].count;
            box.extend(found[thread].box);
        }
    }
    PointRecord* get() { return m_records.get(); }

    int count = 0;
    BoundingBox box;

private:
    FoundRecords list(Slice slice)
    {
        constexpr int ahead = 16;
        const MeshVertex* vertices = m_mesh.getVertices();
        const MeshTriangle* triangles = m_mesh.getTriangles();
        FoundRecords found;
        PointRecord* record = m_records.get() + slice.begin;
        for (int t = slice.begin; t < slice.end; ++t) {
            if (t + ahead < slice.end)
                for (const int corner : triangles[t + ahead].corners) znUtil::prefetch(&vertices[corner]);
            const float *a = &vertices[triangles[t][0]].x, *b = &vertices[triangles[t][1]].x,
                        *c = &vertices[triangles[t][2]].x;
            float nothing = 0; // not a number if a coordinate is not finite
            BoundingBox triangle;
            float *low = &triangle.minX, *high = &triangle.maxX;
            for (int axis = 0; axis < 3; ++axis) {
                nothing += (a[axis] * 0 + b[axis] * 0) + c[axis] * 0;
                low[axis] = lesser(lesser(a[axis], b[axis]), c[axis]);
                high[axis] = greater(greater(a[axis], b[axis]), c[axis]);
                record->at[axis] = low[axis] * 0.5f + high[axis] * 0.5f;
            }
            if (nothing != 0) continue;
            record->number = t;
            ++record;
            found.box.extend(triangle);
        }
        found.count = static_cast<int>(record - (m_records.get() + slice.begin));
        return found;
    }

    const CompactMesh& m_mesh;
    AlignedArray<PointRecord> m_records;
};

} // namespace

TriangleOrder orderTriangles(const CompactMesh& mesh, ThreadPool& pool)
{
    TriangleRecords records(mesh, pool);
    TriangleOrder order;
    order.count = records.count;
    order.box = records.box;
    order.numbers = makeAlignedArray<int>(static_cast<size_t>(records.count));
    const auto scratch = makeAlignedArray<PointRecord>(static_cast<size_t>(records.count));
    orderByHalving(records.get(), scratch.get(), records.count, order.numbers.get(), pool);
    return order;
}

} // namespace znGeom::internal
