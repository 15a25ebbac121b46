/// `znGeom::Quadtree`: the octree's planar companion.
#pragma once

#include "znGeom/spatial/trees/point_tree.h"

namespace znGeom {

using QuadtreeNode = PointTreeNode;
using QuadtreeIterator = PointTreeIterator<2>;

/// A partition of a box by the x and y of the points in it, with the rules of `Octree`; every cell keeps the whole
/// range in z. Immutable once built, and read by any number of threads.
class ZNGEOM_API Quadtree : public zn::ReferenceCount
{
public:
    /// \param points  three floats each; borrowed, and read only here
    Quadtree(int numPoints, const float* points, const BoundingBox& box, int leafCapacity);
    ~Quadtree() override;

    QuadtreeIterator getRoot() const { return {m_box, m_tree.nodes.data()}; }
    int numLeaves() const { return m_tree.numLeaves; }
    /// The number of levels, at least 1.
    int maxDepth() const { return m_tree.maxDepth; }
    /// The point numbers, leaf by leaf.
    const int* pointIndices() const { return m_tree.pointIndices.read(); }

private:
    BoundingBox m_box;
    PointTree m_tree;
};

} // namespace znGeom
