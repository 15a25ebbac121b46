#include "znGeom/spatial/trees/quadtree.h"

#include "znGeom/spatial/trees/internal/tree_builder.h"

namespace znGeom {

Quadtree::Quadtree(int numPoints, const float* points, const BoundingBox& box, int leafCapacity)
    : m_box(box), m_tree(internal::buildPointTree<2>(numPoints, points, box, leafCapacity, true))
{}

Quadtree::~Quadtree() = default;

} // namespace znGeom
