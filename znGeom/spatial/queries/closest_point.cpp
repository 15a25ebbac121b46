#include "znGeom/spatial/queries/closest_point.h"

#include <array>
#include <bitset>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "znGeom/analysis/edges.h"
#include "znGeom/foundation/linear/intersect.h"
#include "znGeom/foundation/mesh/triangle_box.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/spatial/queries/internal/closest_batch.h"
#include "znGeom/spatial/queries/internal/nearest_triangle.h"
#include "znGeom/spatial/queries/octree_closest.h"

namespace znGeom {

using namespace znLinear;

namespace {

constexpr double largestDouble = std::numeric_limits<double>::max();

/// What making a tree costs for each triangle, in the units of `ClosestEngine::walked`.
constexpr double treeCost = 4;

/// The least that a walk costs, in the same units.
constexpr double leastWalk = 200;

} // namespace

class ClosestPointContext final : public zn::ImplBase
{
public:
    explicit ClosestPointContext(const internal::ClosestIndex& index) : m_index(index), m_engine(index) {}

    double compute(const Point& point, MeshCoord* coord)
    {
        if (!m_index.tree && m_engine.walked() > worthOfTree()) makeTree(znUtil::ThreadPool::get());
        return m_engine.compute(point, coord);
    }
    bool compute(const internal::ClosestQuestions& questions, znUtil::Progress* progress, znUtil::ThreadPool& pool)
    {
        if (!m_index.tree && m_engine.walked() + leastWalk * questions.count > worthOfTree()) makeTree(pool);
        return internal::computeAll(m_index, questions, progress, pool);
    }

private:
    double worthOfTree() const { return treeCost * m_index.mesh.getNumTriangles(); }
    void makeTree(znUtil::ThreadPool& pool)
    {
        m_ownTree = new TriangleTree(m_index.mesh, pool);
        m_index.tree = m_ownTree.get();
        m_engine.useTree(*m_index.tree);
    }

    internal::ClosestIndex m_index;
    zn::Reference<TriangleTree> m_ownTree;
    internal::ClosestEngine m_engine;
};

MeshClosestPoint::MeshClosestPoint(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris)
    : m_context(new ClosestPointContext({mesh, octree, octreeTris, nullptr}))
{}

MeshClosestPoint::MeshClosestPoint(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris,
                                   const TriangleTree& tree)
    : m_context(new ClosestPointContext({mesh, octree, octreeTris, &tree}))
{}

MeshClosestPoint::MeshClosestPoint(const MeshClosestPoint& other) = default;
MeshClosestPoint::MeshClosestPoint(MeshClosestPoint&& other) noexcept = default;
MeshClosestPoint::~MeshClosestPoint() = default;

double MeshClosestPoint::compute(const Point& point, MeshCoord* coord) { return m_context->compute(point, coord); }

bool MeshClosestPoint::compute(const Point* points, int count, MeshCoord* places, double* distances,
                               znUtil::Progress* progress, znUtil::ThreadPool& pool)
{
    return m_context->compute({points, count, places, distances}, progress, pool);
}

namespace {

/// The last few hundred triangles that a query has seen. One may be forgotten, which is then tested again to no effect;
/// in return, the start of a query costs the same for a mesh of any size.
class LatelySeen
{
public:
    LatelySeen() { m_seen.fill(-1); }
    /// Marks a triangle; returns whether it was not among those remembered.
    bool mark(int triangle)
    {
        return std::exchange(m_seen[static_cast<unsigned>(triangle) % m_seen.size()], triangle) != triangle;
    }

private:
    std::array<int, 512> m_seen;
};

/// The vertices that still matter when the walk only continues because triangles reach far: the corners of those that
/// are nearer than the best so far, found by one pass over the mesh. Usually there are none.
class VerticesOfNearer
{
public:
    VerticesOfNearer(const CompactMesh& mesh, const internal::NearestTriangle& nearest)
    {
        for (const int triangle : nearest.listNearer(mesh.getNumTriangles()))
            for (const int vertex : mesh.getTriangles()[triangle].corners) m_bits.set(bitOf(vertex));
    }
    bool none() const { return m_bits.none(); }
    /// False for a vertex that does not matter; true for some of these as well.
    bool mayHave(int vertex) const { return m_bits.test(bitOf(vertex)); }

private:
    static constexpr size_t numBits = 1024;
    static size_t bitOf(int vertex) { return static_cast<size_t>(vertex) % numBits; }

    std::bitset<numBits> m_bits;
};

/// The walk of `meshClosestPoint`.
class VertexWalk
{
public:
    VertexWalk(const CompactMesh& mesh, const MeshAdjTris& adjTris, const BoundingBox* neighbourBoxes,
               const Point& point, internal::NearestTriangle& nearest)
        : m_mesh(mesh), m_adjTris(adjTris), m_neighbourBoxes(neighbourBoxes), m_point(point), m_nearest(nearest)
    {}

    void run(const Octree& octree, double reach2)
    {
        const auto bound2 = [&] { return std::max(reach2, m_nearest.best2()); };
        const int patience = m_mesh.getNumTriangles() / 40;
        int numBeyond = 0; // vertices farther than the best so far
        OctreeClosestIt leaves(octree, m_point);
        bool valid = leaves.valid() && !(leaves.getDistance2() >= bound2());
        for (; valid; valid = leaves.nextWithin(bound2())) {
            const OctreeNode& leaf = *leaves.get().node;
            if (leaves.getDistance2() >= m_nearest.best2()) numBeyond += leaf.endPoint - leaf.firstPoint;
            // Making boxes for all vertices within reach would cost more than looking at all triangles once.
            if (numBeyond > patience && !m_neighbourBoxes && !m_matter) m_matter.emplace(m_mesh, m_nearest);
            if (m_matter && m_matter->none()) return;
            for (int i = leaf.firstPoint; i < leaf.endPoint; ++i) test(octree.pointIndices()[i]);
        }
    }

private:
    void test(int vertex)
    {
        if (m_matter && !m_matter->mayHave(vertex)) return;
        const std::span<const int> around = m_adjTris.around(vertex);
        const BoundingBox box = m_neighbourBoxes ? m_neighbourBoxes[vertex]
                                                 : boxAround(m_mesh.getVertices(), m_mesh.getTriangles(), around);
        if (!(m_nearest.best2() > box.distance2(m_point))) return;
        m_nearest.testAll(around.data(), static_cast<int>(around.size()),
                          [this](int triangle) { return m_seen.mark(triangle); });
    }

    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    const BoundingBox* m_neighbourBoxes;
    PointFlt m_point;
    internal::NearestTriangle& m_nearest;
    LatelySeen m_seen;
    std::optional<VerticesOfNearer> m_matter;
};

} // namespace

double meshClosestPoint(const CompactMesh& mesh, const Octree& octree, const MeshAdjTris& adjTris, const Point& point,
                        double longestEdge, double maxDistance2, const BoundingBox* neighbourBoxes, MeshCoord* coord)
{
    // The larger of the two, not their sum: this finds the nearest point unless a triangle reaches far into a leaf that
    // lies beyond both.
    const double reach = longestEdge / std::sqrt(2.0);
    internal::NearestTriangle nearest(mesh, point, maxDistance2, octree.getRoot().box, coord);
    VertexWalk(mesh, adjTris, neighbourBoxes, point, nearest).run(octree, reach * reach);
    return std::sqrt(nearest.best2());
}

double meshClosestPoint(const CompactMesh& mesh, const Octree& octree, const MeshAdjTris& adjTris, const Point& point,
                        MeshCoord* coord)
{
    return meshClosestPoint(mesh, octree, adjTris, point, meshLongestEdge(mesh), largestDouble, nullptr, coord);
}

double meshClosestVertex2(const CompactMesh& mesh, const Octree& octree, const Point& point)
{
    znOS::StopWatch watch;
    const MeshVertex* vertices = mesh.getVertices();
    double best2 = largestDouble;
    OctreeClosestIt leaves(octree, point);
    bool valid = leaves.valid() && !(leaves.getDistance2() >= best2);
    for (; valid; valid = leaves.nextWithin(best2)) {
        const OctreeNode& leaf = *leaves.get().node;
        for (int i = leaf.firstPoint; i < leaf.endPoint; ++i)
            best2 = std::min(best2, distance2(point, vertices[octree.pointIndices()[i]].asPoint()));
    }
    debugChannel().print("   meshClosestVertex: %f s\n", watch.stop());
    return best2;
}

MeshCoord meshTriClosestPt(const float* vertices, const int* triangles, int triangle, const Point& point)
{
    MeshCoord coord;
    coord.project(triangle, vertices, triangles, point);
    return coord;
}

MeshCoord meshRayClosestPt(const CompactMesh& mesh, double longestEdge, const Octree& octree,
                           const MeshAdjTris& adjTris, const Line& line, const Point& point)
{
    bool ok = false;
    const Plane level(point, Normal(line.direction));
    MeshCoord coord;
    meshClosestPoint(mesh, octree, adjTris, intersect(line, level, ok, perpendicular2Tol), longestEdge, largestDouble,
                     nullptr, &coord);
    return coord;
}

} // namespace znGeom
