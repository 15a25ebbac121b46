/// Where algorithms ask for the derived objects of a mesh: adjacency, boundaries, octrees.
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/spatial/trees/octree.h"

namespace znGeom {

class SimpleMeshCacheImpl;

/// Returns a stored object, or builds and stores one. What is stored, and for how long, is up to the subclass.
///
/// An object that a caller holds lives on when the store drops it, and is then stale if the mesh has changed. A cache
/// is not synchronised: it is used from one thread, on which builds run or start.
class ZNGEOM_API MeshCache
{
public:
    virtual ~MeshCache();

    zn::Reference<MeshAdjTris> getAdjTris(const CompactMesh& mesh);
    /// Gets the triangles around vertices first, as `getBoundaries` does.
    zn::Reference<MeshAdjVertices> getAdjVertices(const CompactMesh& mesh);
    /// \param maxDepth  the leaf capacity of a new octree, in spite of its name; below 1 means 16. Ignored when an
    ///                  octree is stored already
    zn::Reference<Octree> getOctree(const CompactMesh& mesh, int maxDepth);
    /// Of the stored octree, or of a new one with leaves of 16.
    zn::Reference<OctreeTris> getOctreeTris(const CompactMesh& mesh);
    zn::Reference<OctreeLines> getOctreeLines(const CompactMesh& mesh);
    zn::Reference<MeshBoundaries> getBoundaries(const CompactMesh& mesh);

protected:
    /// Null when nothing is stored.
    virtual zn::Reference<MeshAdjTris> getAdjTrisImpl(const CompactMesh& mesh) = 0;
    virtual zn::Reference<MeshAdjVertices> getAdjVerticesImpl(const CompactMesh& mesh) = 0;
    virtual zn::Reference<Octree> getOctreeImpl(const CompactMesh& mesh) = 0;
    virtual zn::Reference<OctreeTris> getOctreeTrisImpl(const CompactMesh& mesh) = 0;
    virtual zn::Reference<OctreeLines> getOctreeLinesImpl(const CompactMesh& mesh) = 0;
    virtual zn::Reference<MeshBoundaries> getBoundariesImpl(const CompactMesh& mesh) = 0;

    virtual void setAdjTrisImpl(const CompactMesh& mesh, zn::Reference<MeshAdjTris> adjTris) = 0;
    virtual void setAdjVerticesImpl(const CompactMesh& mesh, zn::Reference<MeshAdjVertices> adjVertices) = 0;
    virtual void setOctreeImpl(const CompactMesh& mesh, zn::Reference<Octree> octree) = 0;
    virtual void setOctreeTrisImpl(const CompactMesh& mesh, zn::Reference<OctreeTris> octreeTris) = 0;
    virtual void setOctreeLinesImpl(const CompactMesh& mesh, zn::Reference<OctreeLines> octreeLines) = 0;
    virtual void setBoundariesImpl(const CompactMesh& mesh, zn::Reference<MeshBoundaries> boundaries) = 0;
};

/// Keeps everything in memory until the mesh reports a change, of whatever kind, or dies. A mesh that changes without
/// reporting it (see `PointMesh::modified`) leaves stale objects here. A copy shares the store of its source and must
/// not outlive it.
class ZNGEOM_API SimpleMeshCache : public MeshCache
{
public:
    SimpleMeshCache();
    SimpleMeshCache(const SimpleMeshCache& other) = default;
    SimpleMeshCache& operator=(const SimpleMeshCache&) = delete;
    ~SimpleMeshCache() override;

    /// Drops everything.
    void clear();

protected:
    zn::Reference<MeshAdjTris> getAdjTrisImpl(const CompactMesh& mesh) override;
    zn::Reference<MeshAdjVertices> getAdjVerticesImpl(const CompactMesh& mesh) override;
    zn::Reference<Octree> getOctreeImpl(const CompactMesh& mesh) override;
    zn::Reference<OctreeTris> getOctreeTrisImpl(const CompactMesh& mesh) override;
    zn::Reference<OctreeLines> getOctreeLinesImpl(const CompactMesh& mesh) override;
    zn::Reference<MeshBoundaries> getBoundariesImpl(const CompactMesh& mesh) override;

    void setAdjTrisImpl(const CompactMesh& mesh, zn::Reference<MeshAdjTris> adjTris) override;
    void setAdjVerticesImpl(const CompactMesh& mesh, zn::Reference<MeshAdjVertices> adjVertices) override;
    void setOctreeImpl(const CompactMesh& mesh, zn::Reference<Octree> octree) override;
    void setOctreeTrisImpl(const CompactMesh& mesh, zn::Reference<OctreeTris> octreeTris) override;
    void setOctreeLinesImpl(const CompactMesh& mesh, zn::Reference<OctreeLines> octreeLines) override;
    void setBoundariesImpl(const CompactMesh& mesh, zn::Reference<MeshBoundaries> boundaries) override;

private:
    zn::ImplPointer<SimpleMeshCacheImpl> m_impl;
};

} // namespace znGeom
