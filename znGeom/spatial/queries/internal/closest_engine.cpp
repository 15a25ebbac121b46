#include "znGeom/spatial/queries/internal/closest_engine.h"

#include <cmath>
#include <limits>

#include "znGeom/spatial/queries/internal/nearest_triangle.h"

namespace znGeom::internal {

using znLinear::Point;

double ClosestEngine::compute(const Point& point, MeshCoord* coord)
{
    MeshCoord found;
    double distance2;
    if (!m_search || !m_search->find(point, m_leaves, found, distance2)) return walk(point, coord);
    if (coord) *coord = found;
    return std::sqrt(distance2);
}

/// Leaf by leaf, in order of increasing distance.
double ClosestEngine::walk(const Point& point, MeshCoord* coord)
{
    constexpr int costOfLeaf = 16;
    if (!m_seenTriangles) m_seenTriangles.emplace(m_index.mesh.getNumTriangles());
    zn::StampTable& seen = *m_seenTriangles;
    const std::uint32_t stamp = seen.next();
    NearestTriangle nearest(m_index.mesh, point, std::numeric_limits<double>::max(), m_index.octree.getRoot().box,
                            coord);
    m_leaves.reset(m_index.octree, point);
    bool valid = m_leaves.valid() && !(m_leaves.getDistance2() >= nearest.best2());
    for (; valid; valid = m_leaves.nextWithin(nearest.best2())) {
        const int leaf = m_leaves.get().node->leafIndex;
        const int count = m_index.octreeTris.numTris(leaf);
        m_walked += costOfLeaf + count;
        if (count == 0) continue;
        nearest.testAll(m_index.octreeTris.firstTri(leaf), count,
                        [&seen, stamp](int triangle) { return seen.mark(triangle, stamp); });
    }
    return std::sqrt(nearest.best2());
}

} // namespace znGeom::internal
