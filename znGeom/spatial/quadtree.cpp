#include "znGeom/spatial/quadtree.h"

#include "znGeom/spatial/internal/tree_builder.h"

namespace znGeom {

Quadtree::Quadtree(int numPoints, const float* points, const BoundingBox& box, int leafCapacity)
    : m_box(box), m_tree(internal::buildPointTree<2>(numPoints, points, box, leafCapacity, true))
{}

Quadtree::~Quadtree() = default;

} // namespace znGeom
