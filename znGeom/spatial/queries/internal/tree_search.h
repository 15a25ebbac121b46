/// The search for the nearest triangle using a tree.
#pragma once

#include <vector>

#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/queries/internal/first_leaf.h"
#include "znGeom/spatial/queries/internal/nearest_measure.h"

namespace znGeom::internal {

/// Answers as a walk over the leaves of an octree by increasing distance does, in which the first of several triangles
/// at exactly the same distance is kept; or reports that such a walk has to be made. Keeps its memory from query to
/// query.
///
/// The tree determines which triangles are nearest; the leaves of the octree are consulted only where that leaves a
/// choice: where several are exactly equally near, or nearly so, the walk takes the one whose leaf it reaches first.
class TreeSearch
{
public:
    TreeSearch(const PackedTriangles& tree, const Octree& octree, const OctreeTris& octreeTris);

    /// Consecutive points are often neighbours: a search begins with the distance to what the last one found as a
    /// bound. This saves time and changes nothing else.
    ///
    /// \param walk   to be used where the order of the octree's leaves decides
    /// \param coord  untouched when the result is false
    /// \return false when the plain walk has to decide
    bool find(const znLinear::Point& query, OctreeClosestIt& walk, MeshCoord& coord, double& distance2);

private:
    void remember(const MeasuredTriangle& found);
    void splitNearest(int count);
    bool isAlone(const znLinear::Point& query, double second2) const;
    double secondDistance2(int count) const;
    int firstOfNearest(const znLinear::Point& query, double second2, OctreeClosestIt& walk);

    const PackedTriangles& m_tree;
    const Octree& m_octree;
    FirstLeaf m_firstLeaf;
    bool m_isUsable;
    double m_margin = 0; ///< half of it separates the triangles left out from the nearest, in the units of the mesh
    NearestCandidates m_candidates;
    std::vector<MeasuredTriangle> m_measured; ///< the nearest ones first
    int m_numNearest = 0;
    std::vector<SoughtTriangle> m_sought;
    znLinear::Point m_lastPlace; ///< what the last search found
    bool m_hasLast = false;
};

} // namespace znGeom::internal
