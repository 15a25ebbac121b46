#include "znGeom/spatial/trees/octree.h"

#include "znGeom/spatial/trees/internal/tree_builder.h"

namespace znGeom {

using namespace znLinear;

Octree::Octree(int numPoints, const float* points, const BoundingBox& box, bool parallel, int leafCapacity)
    : m_points(points), m_box(box), m_tree(internal::buildPointTree<3>(numPoints, points, box, leafCapacity, parallel))
{}

Octree::~Octree() = default;
OctreeTris::~OctreeTris() = default;
OctreeLines::~OctreeLines() = default;

void Octree::getNodeOrdering(const Vector& direction, int* order)
{
    double along[8];
    for (int child = 0; child < 8; ++child) {
        along[child] = (child & 1 ? direction.dx : -direction.dx) + (child & 2 ? direction.dy : -direction.dy) +
                       (child & 4 ? direction.dz : -direction.dz);
        int place = child;
        for (; place > 0 && along[child] < along[order[place - 1]]; --place) order[place] = order[place - 1];
        order[place] = child;
    }
}

} // namespace znGeom
