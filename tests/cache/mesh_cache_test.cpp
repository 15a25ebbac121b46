#include "znGeom/cache/mesh_cache.h"

#include <functional>
#include <memory>
#include <numeric>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/shapes.h"

using namespace znGeom;

namespace {

using Objects = std::vector<zn::Reference<zn::ReferenceCount>>;

Objects objectsOf(MeshCache& cache, const CompactMesh& mesh)
{
    return {cache.getAdjTris(mesh),    cache.getAdjVertices(mesh), cache.getOctree(mesh, -1),
            cache.getOctreeTris(mesh), cache.getOctreeLines(mesh), cache.getBoundaries(mesh)};
}

int numShared(const Objects& a, const Objects& b)
{
    return std::inner_product(a.begin(), a.end(), b.begin(), 0, std::plus(), std::equal_to());
}

/// Lets a test look up and store without building.
class OpenCache : public SimpleMeshCache
{
public:
    using SimpleMeshCache::getAdjTrisImpl;
    using SimpleMeshCache::setAdjTrisImpl;
};

} // namespace

TEST(MeshCache, givesTheSameObjectsUntilAnyChange)
{
    CompactMesh mesh, other;
    znTest::makeGrid(mesh, 6, 5);
    znTest::makeCube(other);
    SimpleMeshCache cache;
    const Objects ofOther = objectsOf(cache, other);
    for (const auto type :
         {MeshModification::GeometryChanged, MeshModification::TopologyChanged, MeshModification::AttributesChanged}) {
        const zn::Reference<MeshAdjTris> held = cache.getAdjTris(mesh);
        const Objects first = objectsOf(cache, mesh);
        EXPECT_EQ(numShared(first, objectsOf(cache, mesh)), 6);
        MeshModification modification(&mesh, type);
        mesh.modified(modification);
        EXPECT_EQ(numShared(first, objectsOf(cache, mesh)), 0);
        EXPECT_EQ(held->getNumVertices(), 30) << "lives on for who holds it";
        EXPECT_EQ(numShared(ofOther, objectsOf(cache, other)), 6) << "each mesh for itself";
    }
    EXPECT_EQ(cache.getBoundaries(mesh)->size(), 1);
    EXPECT_EQ(cache.getAdjVertices(mesh)->numVertices, 30);
    const Objects last = objectsOf(cache, mesh);
    cache.clear();
    EXPECT_EQ(numShared(last, objectsOf(cache, mesh)), 0);
}

TEST(MeshCache, theOctreesParameterIsTheCapacityOfANewOne)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, 30, 20);
    const auto numLeaves = [&mesh](int maxDepth) {
        SimpleMeshCache cache;
        const int count = cache.getOctree(mesh, maxDepth)->numLeaves();
        EXPECT_EQ(cache.getOctree(mesh, 3)->numLeaves(), count) << "the parameter is not looked at any more";
        EXPECT_EQ(cache.getOctreeTris(mesh)->getData().getNumSets(), count);
        EXPECT_EQ(cache.getOctreeLines(mesh)->getData().getNumSets(), count);
        return count;
    };
    EXPECT_EQ(numLeaves(0), numLeaves(16));
    EXPECT_EQ(numLeaves(-1), numLeaves(16));
    EXPECT_GT(numLeaves(4), numLeaves(16));
    EXPECT_EQ(numLeaves(600), 1);

    const CompactMesh empty;
    SimpleMeshCache cache;
    EXPECT_EQ(cache.getOctree(empty, -1)->numLeaves(), 0);
    EXPECT_EQ(cache.getOctreeTris(empty)->numTris(0), 0);
    EXPECT_EQ(cache.getBoundaries(empty)->size(), 0);
}

TEST(MeshCache, aMeshThatDiesTakesItsRecordAlong)
{
    SimpleMeshCache cache;
    zn::Reference<MeshAdjTris> held;
    // Likely at the same address each time: a record that stays would be handed out for the next mesh.
    for (int round = 0; round < 3; ++round) {
        const auto mesh = std::make_unique<CompactMesh>();
        znTest::makeGrid(*mesh, 3 + round, 3);
        held = cache.getAdjTris(*mesh);
        EXPECT_EQ(held->getNumVertices(), 9 + 3 * round);
        EXPECT_EQ(held->getCount(), 2);
    }
    EXPECT_EQ(held->getCount(), 1);
}

TEST(MeshCache, anyNumberOfMeshesDiesInAnyOrder)
{
    // A search through the connections for each that ends would take minutes here.
    constexpr int numMeshes = 30000;
    const zn::Reference<MeshAdjTris> object(new MeshAdjTris);
    for (const int step : {1, numMeshes - 1, 7}) { // first to last, last to first, across
        OpenCache cache;
        std::vector<std::unique_ptr<CompactMesh>> meshes(numMeshes);
        for (auto& mesh : meshes) {
            mesh = std::make_unique<CompactMesh>();
            cache.setAdjTrisImpl(*mesh, object);
        }
        for (int i = 0, next = step - 1; i < numMeshes; ++i, next = (next + step) % numMeshes) {
            EXPECT_EQ(object->getCount(), numMeshes + 1 - i);
            meshes[size_t(next)].reset();
        }
    }
    const CompactMesh mesh;
    std::vector<std::unique_ptr<OpenCache>> caches(numMeshes); // and from the other side
    for (auto& cache : caches) {
        cache = std::make_unique<OpenCache>();
        cache->setAdjTrisImpl(mesh, object);
    }
    while (!caches.empty()) caches.pop_back();
    EXPECT_EQ(object->getCount(), 1);
}

TEST(MeshCache, askingAndInvalidatingForEverGrowsByNothing)
{
    const CompactMesh mesh;
    const zn::Reference<MeshAdjTris> object(new MeshAdjTris);
    MeshModification modification(&mesh, MeshModification::GeometryChanged);
    {
        OpenCache cache;
        const auto askAndInvalidate = [&] {
            cache.setAdjTrisImpl(mesh, object);
            mesh.sendMessage(modification);
        };
        askAndInvalidate();
        const long live = znTest::numLiveAllocations();
        for (int i = 0; i < 1000000; ++i) askAndInvalidate();
        EXPECT_EQ(znTest::numLiveAllocations(), live);
        EXPECT_FALSE(cache.getAdjTrisImpl(mesh));
        EXPECT_EQ(object->getCount(), 1);
        cache.setAdjTrisImpl(mesh, object);
        const SimpleMeshCache copy(cache);
    }
    EXPECT_EQ(object->getCount(), 1) << "the cache goes, its copy has no share in it";
    mesh.sendMessage(modification); // and who is gone isn't told
}
