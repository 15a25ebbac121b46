#include "znGeom/foundation/threads/radix_sort.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/random.h"

using namespace znUtil;

TEST(RadixSort, isTheStableSortOnAnyPool)
{
    ThreadPool one(1), two(2), seven(7);
    znTest::Random random(1);
    // Keys of few values, of the low, the middle or the top bits only, and of all bits.
    for (const std::uint32_t mask : {0x0u, 0x3u, 0x7FFu, 0x1FF800u, 0xFF000000u, 0xFFFFFFFFu})
        for (const int count : {0, 1, 2, 1000, 50000}) {
            std::vector<KeyedIndex> records(static_cast<size_t>(count)), scratch(records.size());
            for (int i = 0; i < count; ++i)
                records[static_cast<size_t>(i)] = {static_cast<std::uint32_t>(random.next()) & mask, i};
            std::vector<KeyedIndex> expected = records;
            std::stable_sort(expected.begin(), expected.end(), [](auto& a, auto& b) { return a.key < b.key; });
            for (ThreadPool* pool : {&one, &two, &seven}) {
                std::vector<KeyedIndex> sorted = records;
                radixSort(sorted.data(), scratch.data(), count, *pool);
                EXPECT_TRUE(std::equal(sorted.begin(), sorted.end(), expected.begin(), expected.end(),
                                       [](auto& a, auto& b) { return a.key == b.key && a.index == b.index; }));
            }
        }
}

TEST(RadixSort, keysHaveTheOrderOfTheNumbers)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const float ascending[] = {-infinity, -3e38f, -1.5f, -1e-40f, 0.0f, 1e-45f, 1e-40f, 1.5f, 3e38f, infinity};
    for (size_t i = 1; i < std::size(ascending); ++i)
        EXPECT_LT(sortableKey(ascending[i - 1]), sortableKey(ascending[i])) << i;
    EXPECT_EQ(sortableKey(-0.0f), sortableKey(0.0f));
    EXPECT_GT(sortableKey(std::nanf("")), sortableKey(infinity));
    EXPECT_LT(sortableKey(-std::nanf("")), sortableKey(-infinity));
}
