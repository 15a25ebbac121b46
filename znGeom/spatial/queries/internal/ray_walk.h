/// The search for the triangle that a ray hits by a walk over the leaves of an octree.
#pragma once

#include <vector>

#include "znGeom/foundation/containers/stamp_table.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/spatial/queries/internal/ray_hit.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom::internal {

/// Front to back, each triangle once. Keeps its memory from cast to cast.
class RayWalk
{
public:
    RayWalk(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris)
        : m_mesh(mesh), m_octree(octree), m_octreeTris(octreeTris), m_seen(mesh.getNumTriangles()),
          m_stack(static_cast<size_t>(8 * octree.maxDepth()))
    {}

    /// \return what it has cost, in tests of triangles
    int search(const RayQuestion& question, NearestHit& hit);

private:
    /// A cell, and where the ray enters it.
    struct Cell
    {
        OctreeIterator at;
        double entry;
    };

    int testLeaf(int leaf, std::uint32_t stamp, NearestHit& hit);

    const CompactMesh& m_mesh;
    const Octree& m_octree;
    const OctreeTris& m_octreeTris;
    zn::StampTable m_seen;
    std::vector<Cell> m_stack;
};

} // namespace znGeom::internal
