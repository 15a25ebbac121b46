/// `znGeom::Octree` and the tables of what touches its leaves.
#pragma once

#include "znGeom/foundation/mesh/array_of_sets.h"
#include "znGeom/spatial/trees/point_tree.h"

namespace znGeom {

using OctreeNode = PointTreeNode;
using OctreeIterator = PointTreeIterator<3>;

/// A partition of a box by the points in it. A cell is split at its middle while it holds more than `leafCapacity`
/// points, unless these all coincide, the cell is at level 24, or it is too small to be halved in `float`. A point that
/// lies on a middle, or is not a number, goes to the low half.
///
/// Immutable once built, and read by any number of threads.
class ZNGEOM_API Octree : public zn::ReferenceCount
{
public:
    /// \param points        three floats each; borrowed, and read only here
    /// \param box           the root cell; points outside belong to the nearest cell
    /// \param parallel      build on the process-wide pool; the tree is the same either way
    /// \param leafCapacity  up to this many points need no further split; below 1 counts as 1
    ///
    /// Without points there is one empty cell, and no leaf has a number. n log n for scattered points, never more than
    /// 24 passes.
    Octree(int numPoints, const float* points, const BoundingBox& box, bool parallel, int leafCapacity);
    ~Octree() override;

    OctreeIterator getRoot() const { return {m_box, m_tree.nodes.data()}; }
    /// The eight child numbers in the order in which they lie along a direction, lower numbers first on ties.
    /// \param order  room for eight
    static void getNodeOrdering(const znLinear::Vector& direction, int* order);

    int numLeaves() const { return m_tree.numLeaves; }
    /// The number of levels, at least 1.
    int maxDepth() const { return m_tree.maxDepth; }
    /// The number of all cells, leaves and those that are split; their records lie side by side, starting with the
    /// root's.
    int numNodes() const { return m_tree.nodes.size(); }
    /// The point numbers, leaf by leaf.
    const int* pointIndices() const { return m_tree.pointIndices.read(); }
    /// As given to the constructor.
    const float* points() const { return m_points; }

private:
    const float* m_points;
    BoundingBox m_box;
    PointTree m_tree;
};

/// For each leaf of an octree, the triangles that touch it. A triangle may touch several.
class ZNGEOM_API OctreeTris : public zn::ReferenceCount
{
public:
    OctreeTris() = default;
    /// Takes over the table, which is then empty.
    explicit OctreeTris(ArrayOfSets& table) { m_table.swap(table); }
    ~OctreeTris() override;

    /// 0 for a leaf beyond the table.
    int numTris(int leaf) const { return leaf < m_table.getNumSets() ? m_table.getSetSize(leaf) : 0; }
    /// Null for a leaf beyond the table.
    const int* firstTri(int leaf) const { return leaf < m_table.getNumSets() ? m_table.getSet(leaf) : nullptr; }
    const ArrayOfSets& getData() const { return m_table; }
    void swap(OctreeTris& other) { m_table.swap(other.m_table); }

private:
    ArrayOfSets m_table;
};

/// For each leaf of an octree, the lines that touch it.
class ZNGEOM_API OctreeLines : public zn::ReferenceCount
{
public:
    OctreeLines() = default;
    /// Takes over the table, which is then empty.
    explicit OctreeLines(ArrayOfSets& table) { m_table.swap(table); }
    ~OctreeLines() override;

    /// 0 for a leaf beyond the table.
    int numLines(int leaf) const { return leaf < m_table.getNumSets() ? m_table.getSetSize(leaf) : 0; }
    /// Null for a leaf beyond the table.
    const int* firstLine(int leaf) const { return leaf < m_table.getNumSets() ? m_table.getSet(leaf) : nullptr; }
    const ArrayOfSets& getData() const { return m_table; }
    void swap(OctreeLines& other) { m_table.swap(other.m_table); }

private:
    ArrayOfSets m_table;
};

} // namespace znGeom
