#include "znGeom/cache/mesh_cache.h"

#include <tuple>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/foundation/containers/tree.h"
#include "znGeom/spatial/trees/octree_partition.h"

namespace znGeom {

using zn::Reference;

MeshCache::~MeshCache() = default;

Reference<MeshAdjTris> MeshCache::getAdjTris(const CompactMesh& mesh)
{
    Reference<MeshAdjTris> result = getAdjTrisImpl(mesh);
    if (result) return result;
    result = new MeshAdjTris;
    meshAdjTris(mesh, *result);
    setAdjTrisImpl(mesh, result);
    return result;
}

Reference<MeshAdjVertices> MeshCache::getAdjVertices(const CompactMesh& mesh)
{
    Reference<MeshAdjVertices> result = getAdjVerticesImpl(mesh);
    if (result) return result;
    const Reference<MeshAdjTris> adjTris = getAdjTris(mesh);
    result = new MeshAdjVertices;
    meshAdjVertices(mesh, *adjTris, *result);
    setAdjVerticesImpl(mesh, result);
    return result;
}

Reference<Octree> MeshCache::getOctree(const CompactMesh& mesh, int maxDepth)
{
    Reference<Octree> result = getOctreeImpl(mesh);
    if (result) return result;
    BoundingBox box;
    meshBoundingBox(mesh, box);
    result = new Octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, maxDepth < 1 ? 16 : maxDepth);
    setOctreeImpl(mesh, result);
    return result;
}

Reference<OctreeTris> MeshCache::getOctreeTris(const CompactMesh& mesh)
{
    Reference<OctreeTris> result = getOctreeTrisImpl(mesh);
    if (result) return result;
    const Reference<Octree> octree = getOctree(mesh, -1);
    result = new OctreeTris;
    computeOctreeTris(mesh, *octree, *result);
    setOctreeTrisImpl(mesh, result);
    return result;
}

Reference<OctreeLines> MeshCache::getOctreeLines(const CompactMesh& mesh)
{
    Reference<OctreeLines> result = getOctreeLinesImpl(mesh);
    if (result) return result;
    const Reference<Octree> octree = getOctree(mesh, -1);
    result = new OctreeLines;
    meshOctreeLines(mesh, *octree, *result);
    setOctreeLinesImpl(mesh, result);
    return result;
}

Reference<MeshBoundaries> MeshCache::getBoundaries(const CompactMesh& mesh)
{
    Reference<MeshBoundaries> result = getBoundariesImpl(mesh);
    if (result) return result;
    const Reference<MeshAdjTris> adjTris = getAdjTris(mesh);
    const Reference<MeshAdjVertices> adjVertices = getAdjVertices(mesh);
    result = new MeshBoundaries;
    meshComputeBoundary(mesh, *adjTris, *adjVertices, *result);
    setBoundariesImpl(mesh, result);
    return result;
}

class SimpleMeshCacheImpl final : public zn::ImplBase
{
public:
    /// The stored reference to an object of one kind.
    template <typename T>
    Reference<T>& stored(const CompactMesh& mesh)
    {
        return std::get<Reference<T>>(recordOf(&mesh));
    }

    void clear() { m_records.clear(); }

private:
    using Record = std::tuple<Reference<MeshAdjTris>, Reference<MeshAdjVertices>, Reference<Octree>,
                              Reference<OctreeTris>, Reference<OctreeLines>, Reference<MeshBoundaries>>;

    Record& recordOf(const Entity* entity)
    {
        if (m_connected.insert(entity)) connect(*entity);
        return m_records[entity];
    }

    void connect(const Entity& entity)
    {
        using Destroyed = znRTB::FunctionArgMember<Entity*, SimpleMeshCacheImpl>;
        using Modified = znRTB::FunctionArgMember<EntityModification&, SimpleMeshCacheImpl>;
        entity.destroyedSignal().addCallback(new Destroyed(this, &SimpleMeshCacheImpl::takeDestroyed), m_client);
        entity.modifiedSignal().addCallback(new Modified(this, &SimpleMeshCacheImpl::takeModified), m_client);
    }

    void takeDestroyed(Entity* entity)
    {
        m_records.eraseNodesMatching(entity);
        m_connected.eraseNodesMatching(entity);
    }
    void takeModified(EntityModification& modification) { m_records.eraseNodesMatching(modification.getEntity()); }

    znRTB::SignalClient m_client;
    zn::map<const Entity*, Record> m_records;
    /// The meshes whose signals call this object. A record comes and goes with each change; its mesh is connected once,
    /// or the callbacks would pile up.
    zn::set<const Entity*> m_connected;
};

SimpleMeshCache::SimpleMeshCache() : m_impl(new SimpleMeshCacheImpl) {}

SimpleMeshCache::~SimpleMeshCache() = default;

void SimpleMeshCache::clear() { m_impl->clear(); }

Reference<MeshAdjTris> SimpleMeshCache::getAdjTrisImpl(const CompactMesh& mesh)
{
    return m_impl->stored<MeshAdjTris>(mesh);
}
Reference<MeshAdjVertices> SimpleMeshCache::getAdjVerticesImpl(const CompactMesh& mesh)
{
    return m_impl->stored<MeshAdjVertices>(mesh);
}
Reference<Octree> SimpleMeshCache::getOctreeImpl(const CompactMesh& mesh) { return m_impl->stored<Octree>(mesh); }
Reference<OctreeTris> SimpleMeshCache::getOctreeTrisImpl(const CompactMesh& mesh)
{
    return m_impl->stored<OctreeTris>(mesh);
}
Reference<OctreeLines> SimpleMeshCache::getOctreeLinesImpl(const CompactMesh& mesh)
{
    return m_impl->stored<OctreeLines>(mesh);
}
Reference<MeshBoundaries> SimpleMeshCache::getBoundariesImpl(const CompactMesh& mesh)
{
    return m_impl->stored<MeshBoundaries>(mesh);
}

void SimpleMeshCache::setAdjTrisImpl(const CompactMesh& mesh, Reference<MeshAdjTris> adjTris)
{
    m_impl->stored<MeshAdjTris>(mesh) = std::move(adjTris);
}
void SimpleMeshCache::setAdjVerticesImpl(const CompactMesh& mesh, Reference<MeshAdjVertices> adjVertices)
{
    m_impl->stored<MeshAdjVertices>(mesh) = std::move(adjVertices);
}
void SimpleMeshCache::setOctreeImpl(const CompactMesh& mesh, Reference<Octree> octree)
{
    m_impl->stored<Octree>(mesh) = std::move(octree);
}
void SimpleMeshCache::setOctreeTrisImpl(const CompactMesh& mesh, Reference<OctreeTris> octreeTris)
{
    m_impl->stored<OctreeTris>(mesh) = std::move(octreeTris);
}
void SimpleMeshCache::setOctreeLinesImpl(const CompactMesh& mesh, Reference<OctreeLines> octreeLines)
{
    m_impl->stored<OctreeLines>(mesh) = std::move(octreeLines);
}
void SimpleMeshCache::setBoundariesImpl(const CompactMesh& mesh, Reference<MeshBoundaries> boundaries)
{
    m_impl->stored<MeshBoundaries>(mesh) = std::move(boundaries);
}

} // namespace znGeom
