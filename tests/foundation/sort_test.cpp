#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/support/random.h"
#include "znGeom/foundation/threads.h"

namespace {

using namespace znUtil;
using znTest::Random;
using Ints = std::vector<int>;

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
        for (int i = 0; i < count; ++i) {
            std::swap(shuffled[size_t(i)], shuffled[size_t(random.below(count))]);
            fewKinds[size_t(i)] = random.below(3);
            organPipe[size_t(i)] = std::min(i, count - i);
        }
        for (const Ints& input : {ascending, descending, shuffled, fewKinds, organPipe, Ints(size_t(count), 5)}) {
            Ints expected = input;
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(sortedBetweenGuards(input, std::less<int>()), expected);
        }
    }
}

/// Decides the order while it is asked, so that every pivot turns out a bad one (McIlroy, "A Killer Adversary for
/// Quicksort", 1999).
class Adversary
{
public:
    explicit Adversary(int count) : m_gas(count), m_value(size_t(count), count) {}
    bool less(int a, int b)
    {
        ++m_comparisons;
        int &va = m_value[size_t(a)], &vb = m_value[size_t(b)];
        if (va == m_gas && vb == m_gas) (a == m_candidate ? va : vb) = m_solid++;
        if (va == m_gas)
            m_candidate = a;
        else if (vb == m_gas)
            m_candidate = b;
        return va < vb;
    }
    double comparisons() const { return m_comparisons; }

private:
    int m_gas, m_solid = 0, m_candidate = 0;
    Ints m_value;
    double m_comparisons = 0;
};

TEST(BoundedSort, NeedsNLogNComparisonsAtTheWorst)
{
    for (const int count : {1000, 20000}) {
        Adversary adversary(count);
        Ints order = indices(count);
        boundedSort(order.begin(), order.end(), [&adversary](int a, int b) { return adversary.less(a, b); });
        EXPECT_LT(adversary.comparisons(), 5 * count * std::log2(count));
        double comparisons = 0;
        Ints equals(size_t(count), 1);
        boundedSort(equals.begin(), equals.end(), [&](int a, int b) { return ++comparisons, a < b; });
        EXPECT_LT(comparisons, 2 * count * std::log2(count));
    }
}

TEST(BoundedSort, EndsInItsRangeWhateverTheComparatorAnswers)
{
    Random random(2);
    std::vector<float> values(3000);
    for (float& value : values)
        value = random.oneIn(3) ? std::numeric_limits<float>::quiet_NaN() : float(random.below(100));
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
            std::vector<std::string> texts; // none is lost or doubled on the way
            for (int i = 0; i < count; ++i) texts.push_back("a text on the heap, number " + std::to_string(i));
            std::vector<std::string> sorted = texts;
            boundedSort(sorted.begin(), sorted.end(), [&less](const std::string& a, const std::string& b) {
                return less(int(a.size()) % 7, int(b.back()) % 7);
            });
            std::sort(sorted.begin(), sorted.end());
            std::sort(texts.begin(), texts.end());
            EXPECT_EQ(sorted, texts);
        }
}

TEST(ParallelSort, MergesTwoHalvesAndKeepsTheFirstInFront)
{
    Random random(3);
    ThreadPool pool(3);
    for (int round = 0; round < 400; ++round) {
        const int count = round < 300 ? round % 51 : random.below(30000), half = (count + 1) / 2;
        Ints keys(static_cast<size_t>(count)), order = indices(count), scratch(static_cast<size_t>(count));
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
        Ints expected = indices(count);
        std::stable_sort(expected.begin(), expected.end(), byKey);
        ASSERT_EQ(order, expected);
    }
}

TEST(ParallelSort, AgreesOnPoolsOfAnySize)
{
    Random random(4);
    std::vector<double> values;
    for (int i = 0; i < 10001; ++i) values.push_back(random.real());
    const std::vector<double> before = values;
    Ints expected = indices(10001);
    std::sort(expected.begin(), expected.end(), [&](int a, int b) { return values[size_t(a)] < values[size_t(b)]; });
    for (const int threads : {1, 2, 7}) {
        ThreadPool pool(threads);
        Ordering up, down;
        up.sort(values.data(), 10001, pool);
        EXPECT_EQ(Ints(up.data(), up.data() + up.size()), expected);
        bool (*const greater)(const double&, const double&) = [](const double& a, const double& b) { return a > b; };
        down.sort(values.data(), 10001, greater, pool);
        EXPECT_EQ(Ints(down.data(), down.data() + down.size()), Ints(expected.rbegin(), expected.rend()));
        down.sort(values.data(), 0, pool);
        EXPECT_EQ(down.size(), 0);
    }
    EXPECT_EQ(values, before);
    // One thread sorts plainly.
    Ints plain = indices(5000), single = plain;
    const auto coarse = [](int a, int b) { return a / 100 > b / 100; };
    boundedSort(plain.begin(), plain.end(), coarse);
    parallelSort(single.data(), single.data() + 5000, coarse, ThreadPool::getSingleThreadedPool());
    EXPECT_EQ(single, plain);
}

TEST(ParallelSort, LosesNoElementToAComparatorThatIsNoOrder)
{
    Random random(5);
    ThreadPool pool(2);
    for (int round = 0; round < 50; ++round) {
        std::vector<float> values(1000);
        for (float& value : values)
            value = random.oneIn(20) ? std::numeric_limits<float>::quiet_NaN() : float(random.below(100));
        Ints order = indices(1000);
        parallelSort(
            order.data(), order.data() + 1000, [&](int a, int b) { return values[size_t(a)] < values[size_t(b)]; },
            pool);
        ASSERT_TRUE(isPermutation(order));
    }
}

} // namespace
