#include "znGeom/spatial/queries/mesh_intersect.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "znGeom/analysis/bounds.h"
#include "znGeom/foundation/mesh/triangle_box.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/foundation/threads/radix_sort.h"
#include "znGeom/spatial/shapes/internal/placed_triangle.h"
#include "znGeom/spatial/trees/internal/box_tree.h"

namespace znGeom {

using internal::BoxSearch;
using internal::BoxTree;
using internal::PlacedTriangle;
using znLinear::AffineMatrix;
using znLinear::Point;
using znUtil::Progress;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// Two triangles and the ends of the segment that they have in common.
struct Crossing
{
    int first, second;
    Point p, q;
};

/// The positions of a mesh, in `double`.
class Positions
{
public:
    explicit Positions(const CompactMesh& mesh) : m_vertices(mesh.getVertices()), m_triangles(mesh.getTriangles()) {}

    void get(int triangle, Point (&corners)[3]) const
    {
        for (int i = 0; i < 3; ++i) corners[i] = m_vertices[m_triangles[triangle][i]].asPoint();
    }
    const MeshTriangle& triangle(int number) const { return m_triangles[number]; }
    BoundingBox box(int triangle) const { return boxAround(m_vertices, m_triangles[triangle]); }
    bool isFinite(int triangle) const
    {
        const MeshTriangle& t = m_triangles[triangle];
        return znGeom::isFinite(m_vertices[t[0]]) && znGeom::isFinite(m_vertices[t[1]]) &&
               znGeom::isFinite(m_vertices[t[2]]);
    }

private:
    const MeshVertex* m_vertices;
    const MeshTriangle* m_triangles;
};

PlacedTriangle placed(const Point (&corners)[3]) { return PlacedTriangle(corners[0], corners[1], corners[2]); }

/// Finds the crossings of two triangles in the same space, unless it is clear that there are none.
bool crossing(const Point (&a)[3], const Point (&b)[3], Crossing& found)
{
    if (internal::liesAside(a, b) || internal::liesAside(b, a)) return false;
    return internal::crosses(placed(a), placed(b), found.p, found.q);
}

/// A stable sort by one of the two triangles.
std::vector<Crossing> orderedBy(int Crossing::*triangle, const std::vector<Crossing>& crossings, ThreadPool& pool)
{
    const int count = static_cast<int>(crossings.size());
    std::vector<znUtil::KeyedIndex> keys(crossings.size()), scratch(crossings.size());
    for (int i = 0; i < count; ++i)
        keys[static_cast<size_t>(i)] = {static_cast<unsigned>(crossings[static_cast<size_t>(i)].*triangle), i};
    znUtil::radixSort(keys.data(), scratch.data(), count, pool);
    std::vector<Crossing> ordered;
    ordered.reserve(crossings.size());
    for (const znUtil::KeyedIndex& key : keys) ordered.push_back(crossings[static_cast<size_t>(key.index)]);
    return ordered;
}

/// Searches for crossings, query by query.
class CrossingAlg : public znUtil::ThreadedChunkAlg
{
public:
    CrossingAlg(const BoxTree& tree, int numQueries, Progress& progress) : m_tree(tree), m_numQueries(numQueries)
    {
        setProgress(&progress);
    }

    void initialize(int) override { m_found.resize(static_cast<size_t>(numChunks)); }

    void execute(int chunkIndex, int threadIndex) override
    {
        BoxSearch search(m_tree);
        const Slice slice(m_numQueries, chunkIndex, numChunks);
        const double share = 1.0 / numChunks / std::max(1, slice.size());
        for (int query = slice.begin; query < slice.end; ++query) {
            if (cancelled(threadIndex)) return;
            test(query, search, m_found[static_cast<size_t>(chunkIndex)]);
            if (query % queriesPerReport == 0)
                updateProgress(threadIndex,
                               static_cast<double>(chunkIndex) / numChunks + share * (query - slice.begin));
        }
        updateProgress(threadIndex, static_cast<double>(chunkIndex + 1) / numChunks);
    }

    /// Ordered by the first triangle, then by the second.
    std::vector<Crossing> takeCrossings(ThreadPool& pool)
    {
        std::vector<Crossing> all;
        for (std::vector<Crossing>& found : m_found) {
            all.insert(all.end(), found.begin(), found.end());
            found = {};
        }
        return orderedBy(&Crossing::first, orderedBy(&Crossing::second, all, pool), pool);
    }

protected:
    virtual void test(int query, BoxSearch& search, std::vector<Crossing>& found) const = 0;

private:
    static constexpr int queriesPerReport = 64;

    const BoxTree& m_tree;
    int m_numQueries;
    std::vector<std::vector<Crossing>> m_found;
};

/// Searches leaf by leaf: the triangles of a leaf, and of those it meets, are close together also where the mesh has
/// them in no order.
class SelfIntersectAlg final : public CrossingAlg
{
public:
    SelfIntersectAlg(const CompactMesh& mesh, const BoxTree& tree, Progress& progress)
        : CrossingAlg(tree, tree.numLeaves, progress), m_positions(mesh)
    {}

private:
    /// Without branches: half of the pairs that are asked about do.
    static bool shareVertex(const MeshTriangle& a, const MeshTriangle& b)
    {
        int numShared = 0;
        for (const int corner : a.corners) numShared += (corner == b[0]) + (corner == b[1]) + (corner == b[2]);
        return numShared > 0;
    }

    void test(int leaf, BoxSearch& search, std::vector<Crossing>& found) const override
    {
        Point corners[3], others[3];
        for (const internal::TrianglePair& pair : search.findPairs(leaf)) {
            const auto [low, high] = std::minmax(pair.first, pair.second);
            if (shareVertex(m_positions.triangle(high), m_positions.triangle(low))) continue;
            m_positions.get(high, corners);
            m_positions.get(low, others);
            Crossing crossed{high, low, {}, {}};
            if (crossing(corners, others, crossed)) found.push_back(crossed);
        }
    }

    Positions m_positions;
};

/// Searches the tree of a first mesh for each triangle of a second.
class IntersectAlg final : public CrossingAlg
{
public:
    IntersectAlg(const CompactMesh& meshA, const CompactMesh& meshB, const BoxTree& tree, const AffineMatrix& matrix,
                 const AffineMatrix& inverse, Progress& progress)
        : CrossingAlg(tree, meshB.getNumTriangles(), progress), m_a(meshA), m_b(meshB), m_matrix(matrix),
          m_inverse(inverse), m_reach(reachOf(tree.box))
    {}

private:
    static double reachOf(const BoundingBox& box)
    {
        const float low = std::min({box.minX, box.minY, box.minZ}), high = std::max({box.maxX, box.maxY, box.maxZ});
        return static_cast<double>(std::max(-low, high));
    }

    /// The box of a triangle in the space of the first mesh, widened by what transforming and narrowing may lose.
    BoundingBox boxInA(const Point (&corners)[3]) const
    {
        constexpr double narrowing = 0x1p-21;
        BoundingBox box;
        double reach = m_reach;
        for (const Point& corner : corners) {
            const Point p = corner * m_inverse;
            box.extend(znLinear::PointFlt(p));
            reach = std::max({reach, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
        }
        if (box.isValid()) box.extend(znLinear::narrow(narrowing * reach));
        return box;
    }

    void test(int query, BoxSearch& search, std::vector<Crossing>& found) const override
    {
        if (!m_b.isFinite(query)) return;
        Point corners[3], others[3];
        m_b.get(query, corners);
        for (const int other : search.findMeeting(boxInA(corners))) {
            m_a.get(other, others);
            for (Point& p : others) p = p * m_matrix;
            Crossing pair{other, query, {}, {}};
            if (crossing(others, corners, pair)) found.push_back(pair);
        }
    }

    Positions m_a, m_b;
    AffineMatrix m_matrix, m_inverse;
    double m_reach; ///< the largest coordinate of the first mesh
};

MeshIntersectPair pairOn(const CompactMesh& mesh, int triangle, const Point& p, const Point& q)
{
    MeshIntersectPair pair;
    pair.start.setFromPoint(triangle, mesh.getVerticesRaw(), mesh.getTrianglesRaw(), p);
    pair.end.setFromPoint(triangle, mesh.getVerticesRaw(), mesh.getTrianglesRaw(), q);
    return pair;
}

/// Calls `write(crossing, index)` for all.
template <typename Write>
void forEachCrossing(const std::vector<Crossing>& crossings, ThreadPool& pool, const Write& write)
{
    znUtil::parallelFor(pool, static_cast<int>(crossings.size()), [&](Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) write(crossings[static_cast<size_t>(i)], static_cast<size_t>(i));
    });
}

BoundingBox boxOf(const CompactMesh& mesh)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    return box;
}

} // namespace

class MeshIntersectImpl final : public zn::ImplBase
{
public:
    MeshIntersectImpl(const CompactMesh& mesh, const Octree* octree, ThreadPool& pool)
        : m_mesh(mesh), m_octree(octree), m_pool(pool)
    {}

    void selfIntersect(Progress& progress, std::deque<MeshIntersectPair>& result)
    {
        znOS::StopWatch watch;
        SelfIntersectAlg alg(m_mesh, tree(), progress);
        m_pool.run(alg);
        const std::vector<Crossing> crossings = alg.takeCrossings(m_pool);
        result.clear();
        result.resize(2 * crossings.size());
        forEachCrossing(crossings, m_pool, [&](const Crossing& found, size_t i) {
            result[2 * i] = pairOn(m_mesh, found.first, found.p, found.q);
            result[2 * i + 1] = pairOn(m_mesh, found.second, found.p, found.q);
        });
        debugChannel().print("znGeom::meshSelfIntersect: %d triangles\n    %d tri/tri intersections\n    %f s\n",
                             m_mesh.getNumTriangles(), static_cast<int>(result.size()), watch.stop());
    }

    void intersect(const CompactMesh& meshB, const BoundingBox& boxB, const AffineMatrix& matrix, Progress& progress,
                   std::deque<MeshIntersectPair>& resultA, std::deque<MeshIntersectPair>& resultB)
    {
        BoundingBox boxA = m_octree ? m_octree->getRoot().box : boxOf(m_mesh);
        boxA.transform(matrix);
        if (!boxA.intersects(boxB)) {
            debugChannel().print("znGeom::meshIntersect: bboxes don't overlap\n");
            return;
        }
        znOS::StopWatch watch;
        const std::vector<Crossing> crossings = findCrossings(meshB, matrix, progress);
        resultA.clear();
        resultB.clear();
        resultA.resize(crossings.size());
        resultB.resize(crossings.size());
        const AffineMatrix inverse = matrix.inverse();
        forEachCrossing(crossings, m_pool, [&](const Crossing& found, size_t i) {
            resultB[i] = pairOn(meshB, found.second, found.p, found.q);
            resultA[i] = pairOn(m_mesh, found.first, found.p * inverse, found.q * inverse);
        });
        debugChannel().print("meshIntersect: triangles1(%d) triangles2(%d)\n    %d intersections, %f s\n",
                             m_mesh.getNumTriangles(), meshB.getNumTriangles(), static_cast<int>(resultA.size()),
                             watch.stop());
    }

private:
    const BoxTree& tree()
    {
        if (!m_tree) m_tree.emplace(m_mesh, m_pool);
        return *m_tree;
    }

    std::vector<Crossing> findCrossings(const CompactMesh& meshB, const AffineMatrix& matrix, Progress& progress)
    {
        AffineMatrix inverse = matrix;
        if (!inverse.invert()) return {};
        IntersectAlg alg(m_mesh, meshB, tree(), matrix, inverse, progress);
        m_pool.run(alg);
        return alg.takeCrossings(m_pool);
    }

    const CompactMesh& m_mesh;
    const Octree* m_octree; ///< may be null
    ThreadPool& m_pool;
    std::optional<BoxTree> m_tree;
};

MeshIntersect::MeshIntersect(const CompactMesh& mesh, ThreadPool& pool)
    : m_impl(new MeshIntersectImpl(mesh, nullptr, pool))
{}

MeshIntersect::MeshIntersect(const CompactMesh& mesh, const Octree& octree, const OctreeTris&, ThreadPool& pool)
    : m_impl(new MeshIntersectImpl(mesh, &octree, pool))
{}

MeshIntersect::MeshIntersect(const MeshIntersect& other) = default;
MeshIntersect::MeshIntersect(MeshIntersect&& other) noexcept = default;
MeshIntersect::~MeshIntersect() = default;

void MeshIntersect::selfIntersect(Progress& progress, std::deque<MeshIntersectPair>& result)
{
    m_impl->selfIntersect(progress, result);
}

void MeshIntersect::intersect(const CompactMesh& meshB, const Octree& octreeB, const OctreeTris&,
                              const AffineMatrix& matrix, Progress& progress, std::deque<MeshIntersectPair>& resultA,
                              std::deque<MeshIntersectPair>& resultB)
{
    m_impl->intersect(meshB, octreeB.getRoot().box, matrix, progress, resultA, resultB);
}

void MeshIntersect::intersect(const CompactMesh& meshB, const AffineMatrix& matrix, Progress& progress,
                              std::deque<MeshIntersectPair>& resultA, std::deque<MeshIntersectPair>& resultB)
{
    m_impl->intersect(meshB, boxOf(meshB), matrix, progress, resultA, resultB);
}

} // namespace znGeom
