/// One query after another for the nearest triangle, on one thread.
#pragma once

#include <optional>

#include "znGeom/foundation/containers/stamp_table.h"
#include "znGeom/spatial/queries/internal/tree_search.h"
#include "znGeom/spatial/trees/triangle_tree.h"

namespace znGeom::internal {

/// What an engine reads; all of it has to outlive the engine.
struct ClosestIndex
{
    const CompactMesh& mesh;
    const Octree& octree;
    const OctreeTris& octreeTris;
    const TriangleTree* tree; ///< may be null
};

/// Answers by a tree where it has one and otherwise by a walk over the leaves, with the same results bit for bit. Keeps
/// its memory from query to query; what only walks need is made by the first walk.
class ClosestEngine
{
public:
    explicit ClosestEngine(const ClosestIndex& index) : m_index(index)
    {
        if (index.tree) useTree(*index.tree);
    }

    /// From now on, answers by this tree.
    void useTree(const TriangleTree& tree)
    {
        m_index.tree = &tree;
        m_search.emplace(tree.triangles(), m_index.octree, m_index.octreeTris);
    }

    /// Like `MeshClosestPoint::compute`.
    double compute(const znLinear::Point& point, MeshCoord* coord);

    /// What the walks have cost so far, in entries of the triangle sets that were examined; each leaf costs some as
    /// well.
    double walked() const { return m_walked; }

private:
    double walk(const znLinear::Point& point, MeshCoord* coord);

    ClosestIndex m_index;
    std::optional<TreeSearch> m_search;
    std::optional<zn::StampTable> m_seenTriangles;
    OctreeClosestIt m_leaves;
    double m_walked = 0;
};

} // namespace znGeom::internal
