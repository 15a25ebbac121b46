#include "znGeom/spatial/trees/octree.h"

#include <cmath>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"

using namespace znGeom;
using namespace znLinear;
using znTest::boxOf;

namespace {

using Points = std::vector<PointFlt>;

/// The rules of the trees, written down plainly and walked side by side with a tree.
template <int Axes>
class TreeOracle
{
public:
    template <typename Tree>
    void expectSame(const Tree& tree, const Points& points, const BoundingBox& box, int leafCapacity)
    {
        m_points = points.data(), m_indices = tree.pointIndices(), m_capacity = leafCapacity;
        std::vector<int> all(points.size());
        std::iota(all.begin(), all.end(), 0);
        walk(tree.getRoot(), all, box, 1, 0);
        EXPECT_TRUE(tree.numLeaves() == m_numLeaves && tree.maxDepth() == m_depth);
    }

private:
    bool splits(const std::vector<int>& inside, const BoundingBox& box, const PointFlt& middle, int level) const
    {
        bool halves = false, differ = false;
        for (int axis = 0; axis < Axes; ++axis)
            halves |= box.minPt()[axis] < middle[axis] && middle[axis] < box.maxPt()[axis];
        for (const int i : inside) differ |= m_points[i] != m_points[inside[0]];
        return static_cast<int>(inside.size()) > m_capacity && level < 24 && halves && differ;
    }

    void walk(PointTreeIterator<Axes> at, const std::vector<int>& inside, const BoundingBox& box, int level, int first)
    {
        const PointFlt middle((box.minX + box.maxX) * 0.5f, (box.minY + box.maxY) * 0.5f, (box.minZ + box.maxZ) * 0.5f);
        m_depth = std::max(m_depth, level);
        ASSERT_EQ(at.box, box);
        ASSERT_EQ(at.node->firstPoint, first);
        ASSERT_EQ(at.node->endPoint, first + static_cast<int>(inside.size()));
        ASSERT_EQ(!at.node->isLeaf, splits(inside, box, middle, level));
        if (at.node->isLeaf) {
            ASSERT_EQ(at.node->leafIndex, m_numLeaves++);
            ASSERT_TRUE(std::equal(inside.begin(), inside.end(), m_indices + first)) << "ascending";
            ASSERT_FALSE(at.descend(0));
            return;
        }
        std::vector<int> chosen[1 << Axes];
        for (const int i : inside) {
            int side = 0;
            for (int axis = 0; axis < Axes; ++axis) side |= int(m_points[i][axis] > middle[axis]) << axis;
            chosen[side].push_back(i);
        }
        for (int child = 0; child < 1 << Axes && !testing::Test::HasFatalFailure(); ++child) {
            BoundingBox half = box;
            for (int axis = 0; axis < Axes; ++axis) (&(child >> axis & 1 ? half.minX : half.maxX))[axis] = middle[axis];
            PointTreeIterator<Axes> below = at;
            ASSERT_TRUE(below.descend(child));
            walk(below, chosen[child], half, level + 1, first);
            first += static_cast<int>(chosen[child].size());
        }
    }

    const PointFlt* m_points = nullptr;
    const int* m_indices = nullptr;
    int m_capacity = 0, m_numLeaves = 0, m_depth = 0;
};

enum Kind { Scattered, Clustered, Flat, OnMiddles, WithNonsense, AllButOneEqual };

Points makePoints(Kind kind, int count)
{
    znTest::Random random(std::uint64_t(kind) + 1);
    Points points(static_cast<size_t>(count));
    for (PointFlt& p : points) {
        p = znTest::pointFlt(random);
        if (kind == Clustered) p = gridPoint(random, 1) + p.asVector() * (random.oneIn(2) ? 1e-6f : 0.1f);
        if (kind == Flat) p.z = 0.375f;
        if (kind == OnMiddles) p = {std::round(p.x * 16) / 16, std::round(p.y * 16) / 16, std::round(p.z * 16) / 16};
        if (kind == AllButOneEqual) p = PointFlt(&p == &points[points.size() / 2] ? 0.75f : 0.25f, 0.25f, 0.25f);
        if (kind == WithNonsense && random.oneIn(4)) p = {NAN, p.y, -NAN};
        if (kind == WithNonsense && random.oneIn(4)) p[random.below(3)] = random.oneIn(2) ? INFINITY : -1e30f;
    }
    return points;
}

void expectTrees(const Points& points, const BoundingBox& box, int leafCapacity)
{
    const int count = static_cast<int>(points.size());
    for (const bool parallel : {false, true})
        TreeOracle<3>().expectSame(Octree(count, &points[0].x, box, parallel, leafCapacity), points, box, leafCapacity);
    TreeOracle<2>().expectSame(Quadtree(count, &points[0].x, box, leafCapacity), points, box, leafCapacity);
}

} // namespace

/// From 16384 points on, the first levels are found in another way.
TEST(Octree, FollowsTheRulesForAllKindsOfPointsAndBoxes)
{
    for (const Kind kind : {Scattered, Clustered, Flat, OnMiddles, WithNonsense, AllButOneEqual})
        for (const int count : {1, 1000, 16383, 16384}) {
            const Points points = makePoints(kind, count);
            BoundingBox box;
            for (const PointFlt& p : points)
                if (p.asVector().length() < 10) box.extend(p);
            for (const int leafCapacity : {1, 16, 64}) {
                SCOPED_TRACE(testing::Message() << kind << ' ' << count << ' ' << leafCapacity);
                expectTrees(points, box, leafCapacity);
                if (HasFatalFailure()) return;
            }
        }
    const float top = BoundingBox::largest;
    const float ranges[][2] = {{top, -top}, {0, 0}, {-top, top}, {0, INFINITY}, {5, 6}, {0.9f * top, top}, {0, 1e-44f}};
    for (const auto& [low, high] : ranges)
        for (const int count : {100, 17000}) {
            BoundingBox box = boxOf({0, -1, -1}, {0, 1, 1});
            box.minX = low, box.maxX = high;
            expectTrees(makePoints(WithNonsense, count), box, 16);
        }
}

TEST(Octree, CoincidentPointsAreOneLeafAndNoPointsAreNone)
{
    const BoundingBox box = boxOf({0, 0, 0}, {1, 1, 1});
    const Points points(1000000, PointFlt(0.25f, 0.25f, 0.25f)), two = makePoints(AllButOneEqual, 2);
    EXPECT_EQ(Octree(1000000, &points[0].x, box, true, 16).numLeaves(), 1);
    EXPECT_EQ(Octree(2, &two[0].x, box, true, 0).numLeaves(), 8) << "at least one point to a leaf";
    const Octree empty(0, nullptr, BoundingBox(), true, 16);
    const OctreeNode& root = *empty.getRoot().node;
    EXPECT_TRUE(empty.numLeaves() == 0 && empty.maxDepth() == 1 && root.isLeaf && root.endPoint == 0);
    ArrayOfSets table(2, 3);
    table.start[0] = 0, table.start[1] = 2;
    const OctreeTris tris(table), none(table); // the first takes over the contents
    EXPECT_TRUE(tris.numTris(0) == 2 && tris.numTris(1) == 1 && tris.numTris(2) == 0 && tris.firstTri(2) == nullptr);
    EXPECT_TRUE(none.numTris(root.leafIndex) == 0 && none.firstTri(root.leafIndex) == nullptr);
}

TEST(Octree, ChildrenAreOrderedAlongADirectionAndNumberedAsCorners)
{
    znTest::Random random(7);
    for (int round = 0; round < 2000; ++round) {
        const Vector direction = round % 2 ? random.vector() : Vector(gridPoint(random, 1).asVector());
        int order[8];
        Octree::getNodeOrdering(direction, order);
        std::pair<double, int> last(-100, -1); // lower numbers first on ties
        for (const int child : order) {
            PointFlt corner;
            boxOf({-1, -1, -1}, {1, 1, 1}).getPoint(child, &corner.x);
            const std::pair<double, int> next(dot(Vector(corner.asVector()), direction), child);
            ASSERT_LT(last, next);
            last = next;
        }
    }
}
