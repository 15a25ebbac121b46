#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"
#include "tests/support/allocations.h"
#include "znGeom/spatial/trees/octree_traversal.h"
#include "znGeom/spatial/trees/quadtree_traversal.h"

using namespace znGeom;
using namespace znLinear;
using znTest::boxOf;
using znTest::makeOctree;
using znTest::Random;

namespace {

CompactMesh makeCloud()
{
    CompactMesh torus;
    znTest::makeTorus(torus, 50, 30);
    return torus;
}

/// The leaves below a cell that pass the test, with children in the given order.
template <typename Cell, typename Passes>
void collect(const Cell& cell, const std::vector<int>& order, const Passes& passes, std::vector<int>& leaves)
{
    if (!passes(cell.box)) return;
    if (cell.node->isLeaf) return leaves.push_back(cell.node->leafIndex);
    for (const int child : order) {
        Cell below = cell;
        ASSERT_TRUE(below.descend(child));
        collect(below, order, passes, leaves);
    }
}

template <typename Iterator>
std::vector<int> walk(Iterator& it)
{
    std::vector<int> leaves;
    for (; it.valid(); it.next()) {
        EXPECT_TRUE(it.get().node->isLeaf);
        leaves.push_back(it.get().node->leafIndex);
    }
    return leaves;
}

bool meets(const BoundingBox& box, const Frustum& frustum) { return intersects(box, frustum); }
bool meets(const BoundingBox& box, const Sphere& sphere) { return intersects(box, sphere); }
bool meets(const BoundingBox& box, const BoundingBox& other) { return box.intersects(other); }
bool meets(const BoundingBox& box, const Ray& ray) { return ray.intersects(box, 0.0f, BoundingBox::largest); }

/// Expects a new iterator, and one that is used for many queries, to deliver the leaves that pass, ordered along a
/// direction.
/// \param largest  raised to the number of leaves
template <typename Query>
void expectLeaves(const Octree& octree, OctreeFilterIt<Query>& reused, const Query& query, const Vector& direction,
                  size_t& largest)
{
    std::vector<int> order(8), expected;
    Octree::getNodeOrdering(direction, order.data());
    collect(
        octree.getRoot(), order, [&](const BoundingBox& box) { return meets(box, query); }, expected);
    OctreeFilterIt<Query> fresh(octree, query);
    ASSERT_EQ(walk(fresh), expected);
    const long before = znTest::numAllocations();
    reused.reset(query);
    size_t count = 0;
    for (; reused.valid(); reused.next()) ++count;
    ASSERT_EQ(znTest::numAllocations(), before) << "walking takes no memory";
    ASSERT_EQ(count, expected.size());
    largest = std::max(largest, count);
}

/// Often on the planes where cells are split.
BoundingBox makeBox(Random& random, const BoundingBox& around)
{
    PointFlt corners[2];
    for (PointFlt& corner : corners)
        for (int axis = 0; axis < 3; ++axis) {
            const float low = around.minPt()[axis], high = around.maxPt()[axis];
            corner[axis] =
                random.oneIn(2) ? low + (high - low) * float(random.below(33)) / 32.0f : float(random.real(-2.0, 2.0));
        }
    return boxOf(corners[0], corners[1]);
}

} // namespace

/// Along the direction of a view or a ray: near ones come first.
TEST(OctreeTraversal, FilteredIteratorsDeliverWhatPassesInOrder)
{
    const CompactMesh mesh = makeCloud();
    for (const int capacity : {1, 12, 1000000}) {
        const zn::Reference<Octree> octree = makeOctree(mesh, capacity);
        Random random(7);
        OctreeIntersectIt frusta(*octree);
        OctreeBBoxIntersectIt boxes(*octree);
        OctreeRayIntersectIt rays(*octree);
        OctreeSphereIntersectIt spheres(*octree);
        EXPECT_FALSE(frusta.valid() || boxes.valid() || rays.valid() || spheres.valid()) << "until reset";
        size_t largest[4] = {};
        for (int round = 0; round < 40; ++round) {
            const Frustum frustum = znTest::randomFrustum(random, random.real(0, 0.1));
            expectLeaves(*octree, frusta, frustum, frustum.getVector(), largest[0]);
            const BoundingBox box = round ? makeBox(random, boxOf(mesh)) : BoundingBox();
            expectLeaves(*octree, boxes, box, Vector::x, largest[1]);
            Vector direction = random.vector();
            direction[random.below(3)] *= random.below(2);
            const Ray ray(PointFlt(random.point(1.5)), direction);
            expectLeaves(*octree, rays, ray, ray.direction(), largest[2]);
            const Sphere sphere{random.point(round % 4 ? 1.5 : 9.0), random.real(0.0, 0.8)};
            expectLeaves(*octree, spheres, sphere, Vector::x, largest[3]);
        }
        for (const size_t count : largest) EXPECT_GE(count, capacity == 1000000 ? 1u : 5u);
    }
    const zn::Reference<Octree> empty = makeOctree(CompactMesh(), 16);
    EXPECT_FALSE(OctreeBBoxIntersectIt(*empty, boxOf(mesh)).valid());
    OctreeLeafIterator leaves(*empty);
    EXPECT_EQ(walk(leaves).size(), 1u);
}

/// Iterators keep their query, and refuse a tree that ends with the statement.
TEST(OctreeTraversal, QueriesMayBeTemporaryAndTreesMayNot)
{
    const CompactMesh mesh = makeCloud();
    const zn::Reference<Octree> octree = makeOctree(mesh, 4);
    OctreeSphereIntersectIt held(*octree, Sphere{Point(0.1, 0.2, 0.3), 0.5});
    const Sphere sphere{Point(0.1, 0.2, 0.3), 0.5};
    OctreeSphereIntersectIt named(*octree, sphere);
    EXPECT_EQ(walk(held), walk(named));
    const Quadtree quadtree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), 4);
    int count = 0;
    for (QuadtreeIntersectIt it(quadtree, BoundingBox(boxOf(mesh))); it.valid(); it.next()) ++count;
    EXPECT_EQ(count, quadtree.numLeaves());
    static_assert(!std::is_constructible_v<OctreeBBoxIntersectIt, Octree, const BoundingBox&> &&
                  !std::is_constructible_v<OctreeClosestIt, Octree, Point> &&
                  !std::is_constructible_v<OctreeLeafIterator, Octree> &&
                  !std::is_constructible_v<QuadtreeIntersectIt, Quadtree, const BoundingBox&>);
}

TEST(OctreeTraversal, AllLeavesTheHighestChildFirst)
{
    const CompactMesh mesh = makeCloud();
    for (const int capacity : {1, 9, 1000000}) {
        const zn::Reference<Octree> octree = makeOctree(mesh, capacity);
        std::vector<int> expected;
        collect(
            octree->getRoot(), {7, 6, 5, 4, 3, 2, 1, 0}, [](const BoundingBox&) { return true; }, expected);
        ASSERT_EQ(int(expected.size()), octree->numLeaves());
        OctreeLeafIterator it(*octree), copy = it;
        EXPECT_EQ(walk(it), expected);
        EXPECT_EQ(walk(copy), expected);
        // Reset in the middle: the rest of the first walk is delivered after the second.
        it.reset(*octree), it.reset(*octree);
        std::vector<int> twice = expected;
        twice.insert(twice.end(), expected.begin(), expected.end());
        EXPECT_EQ(walk(it), twice);
    }
}

TEST(QuadtreeTraversal, DeliversWhatPassesInChildOrder)
{
    const CompactMesh mesh = makeCloud();
    QuadtreeIntersectIt it;
    EXPECT_FALSE(it.valid());
    for (const int capacity : {1, 12, 1000000}) {
        const Quadtree quadtree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), capacity);
        Random random(9);
        for (int round = 0; round < 60; ++round) {
            const BoundingBox query = makeBox(random, boxOf(mesh));
            const auto passes = [&](const BoundingBox& b) { return query.intersects2D(b); };
            std::vector<int> expected;
            collect(quadtree.getRoot(), {0, 1, 2, 3}, passes, expected);
            it.reset(quadtree, query);
            ASSERT_EQ(walk(it), expected);
        }
    }
}
