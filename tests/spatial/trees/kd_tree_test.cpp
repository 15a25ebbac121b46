#include "znGeom/spatial/trees/kd_tree.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/spatial/spatial_support.h"

using namespace znGeom;
using namespace znLinear;

TEST(KDTree, FindsWhatALookAtEveryPointFinds)
{
    znTest::Random random(1);
    for (const bool onGrid : {true, false}) {
        const auto place = [&] { return onGrid ? znTest::gridPoint(random, 1) : znTest::pointFlt(random); };
        std::vector<PointFlt> points(700);
        for (PointFlt& p : points) {
            p = place();
            if (random.oneIn(20)) p[random.below(3)] = random.oneIn(2) ? NAN : -NAN;
            if (random.oneIn(20)) p[random.below(3)] = random.oneIn(2) ? INFINITY : -0.0f;
        }
        std::vector<int> inserted;
        KDTree tree(5);
        for (int round = 0; round < 1000; ++round) {
            BoundingBox box;
            box.extend(place());
            if (!random.oneIn(5)) box.extend(place());
            if (random.oneIn(20)) box.maxY = INFINITY;
            if (random.oneIn(20)) box.minX = random.oneIn(2) ? NAN : 5.0f;
            std::vector<int> expected{-7}, found{-7};
            for (const int i : inserted)
                if (contains(box, points[static_cast<size_t>(i)])) expected.push_back(i);
            std::sort(expected.begin(), expected.end());
            tree.searchAll(&points[0].x, &box.minX, found);
            ASSERT_EQ(found, expected) << "after what was there, ascending";
            const int one = tree.search(&points[0].x, &box.minX);
            ASSERT_TRUE(one < 0 ? expected.size() == 1 : std::binary_search(expected.begin(), expected.end(), one));
            inserted.push_back(random.below(700)); // some twice
            tree.insert(&points[0].x, inserted.back());
        }
    }
}

TEST(KDTree, SortedPointsMakeNoDeepTree)
{
    constexpr int count = 100000;
    std::vector<PointFlt> points;
    KDTree tree(count);
    for (int i = 0; i < count; ++i) points.emplace_back(float(i), float(i / 2), 1.0f);
    for (int i = 0; i < count; ++i) tree.insert(&points[0].x, i);
    for (const int i : {1, 4711, count - 1}) {
        const float box[6] = {float(i - 1), 0, 1, float(i), count, 1};
        std::vector<int> found;
        tree.searchAll(&points[0].x, box, found);
        EXPECT_EQ(found, (std::vector<int>{i - 1, i}));
    }
}
