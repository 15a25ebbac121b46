#include "znGeom/analysis/mesh_cache.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/shapes.h"

using namespace znGeom;

namespace {

/// What a cache hands out for a mesh, in one go.
struct Derived
{
    zn::Reference<MeshAdjTris> adjTris;
    zn::Reference<MeshAdjVertices> adjVertices;
    zn::Reference<Octree> octree;
    zn::Reference<OctreeTris> octreeTris;
    zn::Reference<OctreeLines> octreeLines;
    zn::Reference<MeshBoundaries> boundaries;

    Derived(MeshCache& cache, const CompactMesh& mesh)
        : adjTris(cache.getAdjTris(mesh)), adjVertices(cache.getAdjVertices(mesh)), octree(cache.getOctree(mesh, -1)),
          octreeTris(cache.getOctreeTris(mesh)), octreeLines(cache.getOctreeLines(mesh)),
          boundaries(cache.getBoundaries(mesh))
    {}

    int numShared(const Derived& other) const
    {
        return (adjTris == other.adjTris) + (adjVertices == other.adjVertices) + (octree == other.octree) +
               (octreeTris == other.octreeTris) + (octreeLines == other.octreeLines) + (boundaries == other.boundaries);
    }
};

void tellChange(CompactMesh& mesh, MeshModification::Type type)
{
    MeshModification modification(&mesh, type);
    mesh.modified(modification);
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
    const Derived ofOther(cache, other);
    for (const auto type :
         {MeshModification::GeometryChanged, MeshModification::TopologyChanged, MeshModification::AttributesChanged}) {
        const Derived first(cache, mesh);
        EXPECT_EQ(first.numShared(Derived(cache, mesh)), 6);
        tellChange(mesh, type);
        EXPECT_EQ(first.numShared(Derived(cache, mesh)), 0);
        EXPECT_EQ(first.adjTris->getNumVertices(), 30) << "lives on for who holds it";
        EXPECT_EQ(ofOther.numShared(Derived(cache, other)), 6) << "each mesh for itself";
    }
    const Derived last(cache, mesh);
    EXPECT_EQ(last.boundaries->size(), 1);
    EXPECT_EQ(last.adjVertices->numVertices, 30);
    EXPECT_EQ(last.octreeTris->getData().getNumSets(), last.octree->numLeaves());
    EXPECT_EQ(last.octreeLines->getData().getNumSets(), last.octree->numLeaves());
    cache.clear();
    EXPECT_EQ(last.numShared(Derived(cache, mesh)), 0);
}

TEST(MeshCache, theOctreesParameterIsTheCapacityOfANewOne)
{
    CompactMesh mesh;
    znTest::makeTorus(mesh, 30, 20);
    const auto numLeaves = [&mesh](int maxDepth) {
        SimpleMeshCache cache;
        return cache.getOctree(mesh, maxDepth)->numLeaves();
    };
    EXPECT_EQ(numLeaves(0), numLeaves(16));
    EXPECT_EQ(numLeaves(-1), numLeaves(16));
    EXPECT_GT(numLeaves(4), numLeaves(16));
    EXPECT_EQ(numLeaves(600), 1);
    SimpleMeshCache cache;
    const zn::Reference<Octree> stored = cache.getOctree(mesh, 600);
    EXPECT_EQ(cache.getOctree(mesh, 4), stored) << "not looked at any more";
    EXPECT_EQ(cache.getOctreeTris(mesh)->getData().getNumSets(), 1);
}

TEST(MeshCache, anEmptyMeshHasEmptyObjects)
{
    const CompactMesh mesh;
    SimpleMeshCache cache;
    const Derived derived(cache, mesh);
    EXPECT_EQ(derived.octree->numLeaves(), 0);
    EXPECT_EQ(derived.octreeTris->numTris(0), 0);
    EXPECT_EQ(derived.boundaries->size(), 0);
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
    const auto mesh = std::make_unique<CompactMesh>();
    {
        SimpleMeshCache shortLived;
        shortLived.getAdjTris(*mesh);
        const SimpleMeshCache copy(shortLived);
    }
    tellChange(*mesh, MeshModification::GeometryChanged);
}

TEST(MeshCache, askingAndInvalidatingForEverGrowsByNothing)
{
    const CompactMesh mesh;
    OpenCache cache;
    const zn::Reference<MeshAdjTris> object(new MeshAdjTris);
    MeshModification modification(&mesh, MeshModification::GeometryChanged);
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
}
