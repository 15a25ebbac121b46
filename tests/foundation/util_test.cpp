#include <gtest/gtest.h>

#include <vector>

#include "tests/support/random.h"
#include "znGeom/foundation/util.h"

namespace {

using znUtil::CircularRange;
using Mask = unsigned; // a set of indices of a short cycle

Mask maskOf(const CircularRange& range)
{
    Mask mask = 0;
    for (int i = range.begin(); i < range.end(); ++i) mask |= 1u << i % range.cycleSize();
    return mask;
}

Mask maskOf(const zn::vector<CircularRange>& ranges)
{
    Mask mask = 0;
    for (const CircularRange& range : ranges) mask |= maskOf(range);
    return mask;
}

/// The arcs into which a set falls, each as a set, the one that holds or follows `from` first.
std::vector<Mask> arcsOf(Mask mask, int from, int cycle)
{
    std::vector<Mask> arcs;
    const auto has = [mask, cycle](int i) { return (mask >> (i + cycle) % cycle & 1) != 0; };
    if (mask == (1u << cycle) - 1) return {mask};
    while (mask && !has(from)) ++from;
    while (mask && has(from - 1)) from = (from + cycle - 1) % cycle;
    for (int i = from; i < from + cycle; ++i) {
        if (has(i) && !has(i - 1)) arcs.push_back(0);
        if (has(i)) arcs.back() |= 1u << i % cycle;
    }
    return arcs;
}

TEST(CircularRange, TakesAnyTurn)
{
    for (int cycle = 1; cycle <= 7; ++cycle)
        for (int begin = -15; begin < 15; ++begin)
            for (int length = -cycle; length < 15; ++length) {
                const CircularRange range(begin, begin + length, cycle);
                ASSERT_EQ(range.begin(), (begin + 21 * cycle) % cycle);
                ASSERT_EQ(range.size(), length < 0 ? length + cycle : std::min(length, cycle));
                const CircularRange first = range.firstHalf(), second = range.secondHalf();
                ASSERT_EQ(first.size(), range.size() / 2);
                ASSERT_EQ(maskOf({first, second}), maskOf(range));
                ASSERT_EQ(first.size() + second.size(), range.size());
            }
    const CircularRange none(1, 2, -3), large(2147483000, 100, 2147483647);
    EXPECT_TRUE(none.size() == 0 && !none.contains(1) && none.intersect(none).size() == 0);
    EXPECT_TRUE(large.contains(2147483640) && large.contains(99) && large.contains(-600) && !large.contains(100));
}

TEST(CircularRange, PairsBehaveAsSetsDo)
{
    for (int cycle = 1; cycle <= 7; ++cycle)
        for (int one = 0; one < cycle * (cycle + 1); ++one)
            for (int other = 0; other < cycle * (cycle + 1); ++other) {
                const CircularRange a(one % cycle, one % cycle + one / cycle, cycle);
                const CircularRange b(other % cycle, other % cycle + other / cycle, cycle);
                const Mask ma = maskOf(a), mb = maskOf(b);
                for (int i = -cycle; i < 2 * cycle; ++i) ASSERT_EQ(a.contains(i), bool(ma >> (i + cycle) % cycle & 1));
                ASSERT_EQ(a.contains(b), (mb & ~ma) == 0);

                // The common part may be two arcs: then the one met first from the begin of `a` counts.
                const auto common = arcsOf(ma & mb, a.begin(), cycle);
                ASSERT_EQ(maskOf(a.intersect(b)), common.empty() ? 0 : common[0]);

                // Separate arcs are joined with the gap that follows `a`.
                const CircularRange merged = a.merge(b);
                if (ma == 0 || mb == 0 || arcsOf(ma | mb, 0, cycle).size() == 1) {
                    ASSERT_EQ(maskOf(merged), ma | mb);
                } else {
                    const int length = (b.end() - a.begin() + cycle) % cycle;
                    ASSERT_TRUE(merged == CircularRange(a.begin(), a.begin() + length, cycle));
                }

                zn::vector<CircularRange> rest{a};
                subtract(rest, b);
                ASSERT_EQ(maskOf(rest), ma & ~mb);
                int reached = 0; // after the begin of `a`
                for (const CircularRange& piece : rest) {
                    const int offset = (piece.begin() - a.begin() + cycle) % cycle;
                    ASSERT_GE(offset, reached);
                    reached = offset + piece.size();
                }
                ASSERT_LE(rest.size(), 2);
            }
}

TEST(CircularRange, ListsAreJoinedAndCutAsSetsAre)
{
    znTest::Random random(1);
    for (int round = 0; round < 20000; ++round) {
        const int cycle = 1 + random.below(12);
        zn::vector<CircularRange> ranges;
        for (int i = random.below(6); i > 0; --i) {
            const int begin = random.below(cycle);
            ranges.append(CircularRange(begin, begin + random.below(cycle + 1) * random.below(2), cycle));
        }
        const Mask covered = maskOf(ranges);
        const CircularRange cut(random.below(cycle), random.below(cycle), cycle);
        zn::vector<CircularRange> rest = ranges;
        subtract(rest, cut);
        ASSERT_EQ(maskOf(rest), covered & ~maskOf(cut));

        merge(ranges);
        auto expected = arcsOf(covered, 0, cycle);
        ASSERT_EQ(ranges.size(), int(expected.size()));
        int begin = -1;
        for (const CircularRange& range : ranges) {
            ASSERT_GT(range.begin(), begin);
            begin = range.begin();
            ASSERT_EQ(std::erase(expected, maskOf(range)), 1u);
        }
    }
}

TEST(Transform2d, KeepsTheOrderOfScaleAndOffset)
{
    float u = 1, v = 2;
    for (const int order : {0, 7}) znUtil::Transform2d{2, 3, 10, 20, order}.apply(u, v);
    EXPECT_TRUE(u == 44 && v == 138); // 12 and 26 at first
}

} // namespace
