#include "znGeom/spatial/queries/internal/ray_walk.h"

namespace znGeom::internal {

namespace {

/// A ray that meets each box which it passes within what rounding may have moved a hit by.
class WideRay
{
public:
    WideRay(const RayQuestion& question, const BoundingBox& root)
    {
        double size = 0, largest = 0;
        for (int axis = 0; axis < 3; ++axis) {
            m_origin[axis] = static_cast<double>((&question.origin.x)[axis]);
            const double low = static_cast<double>((&root.minX)[axis]), high = static_cast<double>((&root.maxX)[axis]);
            size = std::max({size, std::fabs(m_origin[axis]), std::fabs(low), std::fabs(high)});
            largest = std::max(largest, std::fabs((&question.direction.dx)[axis]));
        }
        m_widening = 32.0 / (1 << 24) * size;
        for (int axis = 0; axis < 3; ++axis) {
            const double along = (&question.direction.dx)[axis], least = 1e-30 * largest;
            m_inverse[axis] = 1 / (std::fabs(along) < least ? std::copysign(least, along) : along);
        }
    }

    /// Whether the ray meets a box up to a parameter, and where it enters.
    bool meets(const BoundingBox& box, double reach, double& entry) const
    {
        double enter = 0, leave = reach;
        for (int axis = 0; axis < 3; ++axis) {
            const double low = static_cast<double>((&box.minX)[axis]) - m_widening;
            const double high = static_cast<double>((&box.maxX)[axis]) + m_widening;
            const double a = (low - m_origin[axis]) * m_inverse[axis], b = (high - m_origin[axis]) * m_inverse[axis];
            enter = std::max(enter, std::min(a, b));
            leave = std::min(leave, std::max(a, b));
        }
        entry = enter;
        return enter <= leave;
    }

private:
    double m_origin[3], m_inverse[3], m_widening;
};

} // namespace

int RayWalk::search(const RayQuestion& question, NearestHit& hit)
{
    constexpr int costOfCell = 4;
    if (m_octree.numLeaves() < 1) return 0;
    const WideRay ray(question, m_octree.getRoot().box);
    const std::uint32_t stamp = m_seen.next();
    int order[8], cost = 0;
    Octree::getNodeOrdering(question.direction, order);
    size_t size = 0;
    const auto push = [&](const OctreeIterator& at) {
        m_stack[size].at = at;
        size += ray.meets(at.box, hit.param(), m_stack[size].entry);
    };
    push(m_octree.getRoot());
    while (size > 0) {
        const Cell cell = m_stack[--size];
        if (cell.entry > hit.param()) continue;
        cost += costOfCell;
        if (cell.at.node->isLeaf) {
            cost += testLeaf(cell.at.node->leafIndex, stamp, hit);
            if (hit.isFinal()) break;
            continue;
        }
        for (int i = 8; i-- > 0;) {
            OctreeIterator child = cell.at;
            child.descend(order[i]);
            push(child);
        }
    }
    return cost;
}

/// \return how many triangles the leaf lists
int RayWalk::testLeaf(int leaf, std::uint32_t stamp, NearestHit& hit)
{
    const int count = m_octreeTris.numTris(leaf);
    const int* const listed = m_octreeTris.firstTri(leaf);
    const MeshVertex* const vertices = m_mesh.getVertices();
    for (int i = 0; i < count && !hit.isFinal(); ++i) {
        if (!m_seen.mark(listed[i], stamp)) continue;
        const MeshTriangle& triangle = m_mesh.getTriangles()[listed[i]];
        hit.test(listed[i], &vertices[triangle[0]].x, &vertices[triangle[1]].x, &vertices[triangle[2]].x);
    }
    return count;
}

} // namespace znGeom::internal
