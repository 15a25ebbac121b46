#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "tests/support/random.h"
#include "znGeom/foundation/threads.h"

namespace {

using namespace znUtil;
using znTest::Random;
using Ints = std::vector<int>;

constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();

Ints indices(int count)
{
    Ints all(static_cast<size_t>(count));
    std::iota(all.begin(), all.end(), 0);
    return all;
}

bool isPermutation(Ints sorted)
{
    std::sort(sorted.begin(), sorted.end());
    return sorted == indices(int(sorted.size()));
}

/// Sorts between two guards that no comparison may see.
template <typename Less>
Ints sortedBetweenGuards(const Ints& input, Less less)
{
    constexpr int guard = -77;
    Ints all = input;
    all.insert(all.begin(), guard);
    all.push_back(guard);
    boundedSort(all.begin() + 1, all.end() - 1, [&less](int a, int b) {
        EXPECT_TRUE(a != guard && b != guard);
        return less(a, b);
    });
    EXPECT_TRUE(all.front() == guard && all.back() == guard);
    return Ints(all.begin() + 1, all.end() - 1);
}

TEST(BoundedSort, SortsAnyShapeOfInput)
{
    Random random(1);
    for (const int count : {0, 1, 2, 3, 24, 25, 26, 100, 5000}) {
        const Ints ascending = indices(count), descending(ascending.rbegin(), ascending.rend());
        Ints shuffled = ascending, fewKinds = ascending, organPipe = ascending;
        for (int& value : shuffled) value = random.below(10 * count);
        for (int& value : fewKinds) value = random.below(3);
        for (int& value : organPipe) value = std::min(value, count - value);
        for (const Ints& input : {ascending, descending, shuffled, fewKinds, organPipe, Ints(size_t(count), 5)}) {
            Ints expected = input;
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(sortedBetweenGuards(input, std::less<int>()), expected);
        }
    }
}

/// Decides the order while it is asked, so that every pivot turns out a bad one (McIlroy, "A Killer Adversary for
/// Quicksort", 1999).
struct Adversary
{
    explicit Adversary(int count) : gas(count), value(size_t(count), count) {}
    bool less(int a, int b)
    {
        ++comparisons;
        int &va = value[size_t(a)], &vb = value[size_t(b)];
        if (va == gas && vb == gas) (a == candidate ? va : vb) = solid++;
        if (va == gas)
            candidate = a;
        else if (vb == gas)
            candidate = b;
        return va < vb;
    }
    int gas, solid = 0, candidate = 0;
    Ints value;
    double comparisons = 0;
};

TEST(BoundedSort, NeedsNLogNComparisonsAtTheWorst)
{
    for (const int count : {1000, 20000}) {
        Adversary adversary(count);
        Ints order = indices(count);
        boundedSort(order.begin(), order.end(), [&adversary](int a, int b) { return adversary.less(a, b); });
        EXPECT_LT(adversary.comparisons, 5 * count * std::log2(count));
        double comparisons = 0;
        Ints equals(size_t(count), 1);
        boundedSort(equals.begin(), equals.end(), [&](int a, int b) { return ++comparisons, a < b; });
        EXPECT_LT(comparisons, 2 * count * std::log2(count));
    }
}

TEST(BoundedSort, EndsInItsRangeWhateverTheComparatorAnswers)
{
    Random random(2);
    ThreadPool pool(2);
    std::vector<float> values(3000);
    for (float& value : values) value = random.oneIn(3) ? nan : float(random.below(100));
    const std::function<bool(int, int)> comparators[] = {
        [](int, int) { return true; },
        [](int, int) { return false; },
        [&](int, int) { return random.oneIn(2); },
        [](int a, int b) { return (a - b + 3000) % 3 == 1; }, // a circle
        [&](int a, int b) { return values[size_t(a)] < values[size_t(b)]; },
        [&](int a, int b) { return !(values[size_t(a)] < values[size_t(b)]); },
    };
    for (const auto& less : comparators)
        for (const int count : {2, 24, 25, 300, 3000}) {
            EXPECT_TRUE(isPermutation(sortedBetweenGuards(indices(count), less)));
            std::vector<std::unique_ptr<int>> owners; // none is lost or doubled on the way
            for (int i = 0; i < count; ++i) owners.push_back(std::make_unique<int>(i));
            boundedSort(owners.begin(), owners.end(), [&less](auto& a, auto& b) { return less(*a, *b); });
            Ints owned;
            for (const auto& owner : owners) owned.push_back(*owner);
            EXPECT_TRUE(isPermutation(owned));
        }
    for (int round = 0; round < 50; ++round) { // nor where two halves are merged
        for (float& value : values) value = random.oneIn(20) ? nan : float(random.below(100));
        Ints order = indices(1000);
        parallelSort(order.data(), order.data() + 1000, comparators[4], pool);
        ASSERT_TRUE(isPermutation(order));
    }
}

TEST(ParallelSort, MergesTwoHalvesAndKeepsTheFirstInFront)
{
    Random random(3);
    ThreadPool pool(3);
    for (int round = 0; round < 400; ++round) {
        const int count = round < 300 ? round % 51 : random.below(30000), half = (count + 1) / 2;
        Ints keys(static_cast<size_t>(count)), order = indices(count), scratch = order, expected = order;
        for (int& key : keys) key = random.below(round % 3 == 0 ? 4 : 1000);
        const auto byKey = [&keys](int a, int b) { return keys[size_t(a)] < keys[size_t(b)]; };
        const auto byKeyThenIndex = [&](int a, int b) { return byKey(a, b) || (!byKey(b, a) && a < b); };
        const auto asksSecondAgainstFirst = [&](int a, int b) {
            EXPECT_TRUE(a >= half && b < half);
            return byKey(a, b);
        };
        int *begin = order.data(), *end = begin + count;
        SMPSortPiecewise<int, decltype(byKeyThenIndex)> pieces(begin, end, byKeyThenIndex);
        pool.run(pieces);
        SMPSortMerge<int, decltype(asksSecondAgainstFirst)> merge(begin, end, scratch.data(), asksSecondAgainstFirst);
        pool.run(merge);
        std::stable_sort(expected.begin(), expected.end(), byKey);
        ASSERT_EQ(order, expected);
    }
}

TEST(ParallelSort, AgreesOnPoolsOfAnySize)
{
    Random random(4);
    std::vector<double> values;
    for (int i = 0; i < 10001; ++i) values.push_back(random.real());
    Ints expected = indices(10001);
    std::sort(expected.begin(), expected.end(), [&](int a, int b) { return values[size_t(a)] < values[size_t(b)]; });
    for (const int threads : {1, 2, 7}) {
        ThreadPool pool(threads);
        Ordering up, down;
        up.sort(values.data(), 10001, pool);
        EXPECT_EQ(Ints(up.data(), up.data() + up.size()), expected);
        down.sort(values.data(), 10001, std::greater<double>(), pool);
        EXPECT_EQ(Ints(down.data(), down.data() + down.size()), Ints(expected.rbegin(), expected.rend()));
        down.sort(values.data(), 0, pool);
        EXPECT_EQ(down.size(), 0);
    }
    // One thread sorts plainly.
    Ints plain = indices(5000), single = plain;
    const auto coarse = [](int a, int b) { return a / 100 > b / 100; };
    boundedSort(plain.begin(), plain.end(), coarse);
    parallelSort(single.data(), single.data() + 5000, coarse, ThreadPool::getSingleThreadedPool());
    EXPECT_EQ(single, plain);
}

TEST(RadixSort, IsTheStableSortOnAnyPool)
{
    ThreadPool one(1), two(2), seven(7);
    Random random(1);
    // Keys of few values, of the low, the middle or the top bits only, and of all bits.
    for (const std::uint32_t mask : {0x0u, 0x3u, 0x7FFu, 0x1FF800u, 0xFF000000u, 0xFFFFFFFFu})
        for (const int count : {0, 1, 2, 1000, 50000}) {
            std::vector<KeyedIndex> records, scratch(static_cast<size_t>(count));
            for (int i = 0; i < count; ++i) records.push_back({static_cast<std::uint32_t>(random.next()) & mask, i});
            std::vector<KeyedIndex> expected = records;
            std::stable_sort(expected.begin(), expected.end(), [](auto& a, auto& b) { return a.key < b.key; });
            for (ThreadPool* pool : {&one, &two, &seven}) {
                std::vector<KeyedIndex> sorted = records;
                radixSort(sorted.data(), scratch.data(), count, *pool);
                EXPECT_TRUE(std::equal(sorted.begin(), sorted.end(), expected.begin(),
                                       [](auto& a, auto& b) { return a.key == b.key && a.index == b.index; }));
            }
        }
}

TEST(RadixSort, KeysHaveTheOrderOfTheNumbers)
{
    const float ascending[] = {-nan,   -infinity, -3e38f, -1.5f, -1e-40f,  0.0f,
                               1e-45f, 1e-40f,    1.5f,   3e38f, infinity, nan};
    for (size_t i = 1; i < std::size(ascending); ++i)
        EXPECT_LT(sortableKey(ascending[i - 1]), sortableKey(ascending[i])) << i;
    EXPECT_EQ(sortableKey(-0.0f), sortableKey(0.0f));
}

TEST(CountingSort, KeepsTheOrderOfPartsOfAnyLength)
{
    Random random(6);
    for (const int threads : {1, 2, 7}) {
        ThreadPool pool(threads);
        for (const int numKeys : {0, 1, 5, 3000}) {
            CountingSort sort(pool, numKeys);
            std::vector<std::pair<int, int>> all; // keys and numbers
            std::vector<size_t> ends;
            for (int thread = 0; thread < threads; ++thread) {
                for (int left = numKeys ? random.below(2000) : 0; left > 0; --left)
                    all.emplace_back(random.below(numKeys), int(all.size()));
                ends.push_back(all.size());
            }
            const auto visit = [&](int thread, const auto& take) {
                for (size_t i = thread ? ends[size_t(thread) - 1] : 0; i < ends[size_t(thread)]; ++i)
                    take(all[i].first, all[i]);
            };
            Ints starts(size_t(numKeys), -1), perKey(size_t(numKeys), 0);
            for (const auto& item : all) ++perKey[size_t(item.first)];
            auto expected = all, sorted = all;
            std::sort(expected.begin(), expected.end());
            for (int again = 0; again < 2; ++again) {
                EXPECT_EQ(sort.count(visit, starts.data()),
                          numKeys ? *std::max_element(perKey.begin(), perKey.end()) : 0);
                sort.place(visit, [&](int place, const auto& item) { sorted[size_t(place)] = item; });
                EXPECT_EQ(sorted, expected);
            }
            for (size_t key = 0, start = 0; key < perKey.size(); start += size_t(perKey[key++]))
                ASSERT_EQ(size_t(starts[key]), start);
        }
    }
}

} // namespace
