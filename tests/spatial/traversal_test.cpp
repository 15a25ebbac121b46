#include "znGeom/spatial/octree_traversal.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/support/allocations.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial/box_predicates.h"
#include "znGeom/spatial/quadtree_traversal.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

CompactMesh makeCloud()
{
    CompactMesh torus;
    znTest::makeTorus(torus, 50, 30);
    return torus;
}

BoundingBox boxOf(const CompactMesh& mesh)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    return box;
}

zn::Reference<Octree> makeOctree(const CompactMesh& mesh, int leafCapacity)
{
    return new Octree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), true, leafCapacity);
}

/// The leaves below a cell that pass the test, children in the given order.
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

/// A filtered iterator that is used for many queries, and what it must deliver.
template <typename Query>
class FilterCheck
{
public:
    explicit FilterCheck(const Octree& octree) : m_octree(octree), m_reused(octree) { EXPECT_FALSE(m_reused.valid()); }

    template <typename Passes>
    void check(const Query& query, const Vector& direction, const Passes& passes)
    {
        std::vector<int> order(8), expected;
        Octree::getNodeOrdering(direction, order.data());
        collect(m_octree.getRoot(), order, passes, expected);
        OctreeFilterIt<Query> fresh(m_octree, query);
        ASSERT_EQ(walk(fresh), expected);
        const long before = znTest::numAllocations();
        m_reused.reset(query);
        size_t count = 0;
        for (; m_reused.valid(); m_reused.next()) ++count;
        ASSERT_EQ(znTest::numAllocations(), before) << "walking takes no memory";
        ASSERT_EQ(count, expected.size());
        m_largest = std::max(m_largest, expected.size());
    }
    size_t largest() const { return m_largest; }

private:
    const Octree& m_octree;
    OctreeFilterIt<Query> m_reused;
    size_t m_largest = 0;
};

Frustum makeFrustum(Random& random)
{
    const Point eye = random.point(2.0);
    const double size = random.real(0.05, 1.0);
    const Vector along = random.vector(), u = along.orthogonalVector() * size, v = cross(along, u);
    Point corners[8];
    for (int i = 0; i < 8; ++i) {
        const double s = i % 4 == 0 || i % 4 == 3 ? -1 : 1, t = i % 4 < 2 ? -1 : 1, depth = i < 4 ? 0.1 : 3.0;
        corners[i] = eye + along * depth + u * (s * depth) + v * (t * depth);
    }
    return Frustum(corners);
}

/// Often on the planes where cells are split.
BoundingBox makeBox(Random& random, const BoundingBox& around)
{
    const auto number = [&](float low, float high) {
        return random.oneIn(2) ? low + (high - low) * static_cast<float>(random.below(33)) / 32.0f
                               : static_cast<float>(random.real(-2.0, 2.0));
    };
    BoundingBox box;
    for (int i = 0; i < 2; ++i)
        box.extend(PointFlt(number(around.minX, around.maxX), number(around.minY, around.maxY),
                            number(around.minZ, around.maxZ)));
    return box;
}

} // namespace

TEST(OctreeTraversal, filteredIteratorsDeliverWhatPassesInOrder)
{
    const CompactMesh mesh = makeCloud();
    for (const int capacity : {1, 12, 1000000}) {
        const zn::Reference<Octree> octree = makeOctree(mesh, capacity);
        Random random(7);
        FilterCheck<Frustum> frusta(*octree);
        FilterCheck<BoundingBox> boxes(*octree);
        FilterCheck<Ray> rays(*octree);
        FilterCheck<Sphere> spheres(*octree);
        for (int round = 0; round < 40; ++round) {
            const Frustum frustum = makeFrustum(random);
            frusta.check(frustum, frustum.getVector(), [&](const BoundingBox& b) { return intersects(b, frustum); });
            const BoundingBox box = makeBox(random, boxOf(mesh));
            boxes.check(box, Vector::x, [&](const BoundingBox& b) { return b.intersects(box); });
            Vector direction = random.vector();
            direction[random.below(3)] *= random.below(2);
            const Ray ray(PointFlt(random.point(1.5)), direction);
            rays.check(ray, ray.direction(), [&](const BoundingBox& b) {
                return ray.intersects(b, 0.0f, std::numeric_limits<float>::max());
            });
            const Sphere sphere{random.point(1.5), random.real(0.0, 0.8)};
            spheres.check(sphere, Vector::x, [&](const BoundingBox& b) { return intersects(b, sphere); });
        }
        for (const size_t largest : {frusta.largest(), boxes.largest(), rays.largest(), spheres.largest()})
            EXPECT_GE(largest, capacity == 1000000 ? 1u : 5u);
    }
}

TEST(OctreeTraversal, raysGoFrontToBack)
{
    const CompactMesh mesh = makeCloud();
    const zn::Reference<Octree> octree = makeOctree(mesh, 4);
    Random random(8);
    for (int round = 0; round < 50; ++round) {
        const Normal along = random.direction();
        const Ray ray(PointFlt(random.point(0.3) - along.asVector() * 4.0), along.asVector());
        double previous = 0;
        for (OctreeRayIntersectIt it(*octree, ray); it.valid(); it.next()) {
            // Where the ray enters a box: the last of its three near planes.
            const BoundingBox box = it.get().box;
            const float* sides = &box.minX;
            const double entry =
                static_cast<double>(std::max({(sides[ray.nearX] - ray.origin.x) * ray.inverseDirection.dx,
                                              (sides[ray.nearY] - ray.origin.y) * ray.inverseDirection.dy,
                                              (sides[ray.nearZ] - ray.origin.z) * ray.inverseDirection.dz}));
            ASSERT_GE(entry, previous - 1e-5);
            previous = std::max(previous, entry);
        }
    }
}

TEST(OctreeTraversal, aMissedRootAndAnEmptyTree)
{
    const CompactMesh mesh = makeCloud();
    const zn::Reference<Octree> octree = makeOctree(mesh, 4), empty = new Octree(0, nullptr, BoundingBox(), true, 16);
    const float away[3] = {9, 9, 9};
    EXPECT_FALSE(OctreeBBoxIntersectIt(*octree, BoundingBox(away)).valid());
    EXPECT_FALSE(OctreeBBoxIntersectIt(*octree, BoundingBox()).valid());
    EXPECT_FALSE(OctreeSphereIntersectIt(*octree, Sphere{{9, 9, 9}, 1.0}).valid());
    EXPECT_FALSE(OctreeRayIntersectIt(*octree, Ray({9, 9, 9}, {1, 0, 0})).valid());
    EXPECT_FALSE(OctreeBBoxIntersectIt(*empty, boxOf(mesh)).valid());
    OctreeLeafIterator leaves(*empty);
    EXPECT_EQ(walk(leaves).size(), 1u);
}

TEST(OctreeTraversal, allLeavesTheHighestChildFirst)
{
    const CompactMesh mesh = makeCloud();
    for (const int capacity : {1, 9, 1000000}) {
        const zn::Reference<Octree> octree = makeOctree(mesh, capacity);
        std::vector<int> expected;
        collect(
            octree->getRoot(), {7, 6, 5, 4, 3, 2, 1, 0}, [](const BoundingBox&) { return true; }, expected);
        ASSERT_EQ(static_cast<int>(expected.size()), octree->numLeaves());
        OctreeLeafIterator it(*octree);
        OctreeLeafIterator copy = it;
        EXPECT_EQ(walk(it), expected);
        it.reset(*octree);
        EXPECT_EQ(walk(it), expected);
        EXPECT_EQ(walk(copy), expected);
    }
    // Reset in the middle: the rest of the first walk comes up again after the second.
    const zn::Reference<Octree> octree = makeOctree(mesh, 9);
    OctreeLeafIterator it(*octree);
    it.reset(*octree);
    EXPECT_EQ(static_cast<int>(walk(it).size()), 2 * octree->numLeaves());
}

TEST(QuadtreeTraversal, deliversWhatPassesInChildOrder)
{
    const CompactMesh mesh = makeCloud();
    QuadtreeIntersectIt it;
    EXPECT_FALSE(it.valid());
    for (const int capacity : {1, 12, 1000000}) {
        const Quadtree quadtree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), capacity);
        Random random(9);
        for (int round = 0; round < 60; ++round) {
            const BoundingBox query = makeBox(random, boxOf(mesh));
            std::vector<int> expected;
            collect(
                quadtree.getRoot(), {0, 1, 2, 3}, [&](const BoundingBox& b) { return query.intersects2D(b); },
                expected);
            it.reset(quadtree, query);
            ASSERT_EQ(it.valid(), !expected.empty());
            ASSERT_EQ(walk(it), expected);
        }
    }
}
