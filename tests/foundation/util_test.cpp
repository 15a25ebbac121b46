#include <gtest/gtest.h>

#include <vector>

#include "tests/support/random.h"
#include "znGeom/foundation/utilities.h"

namespace {

using znUtil::CircularRange;
using Mask = unsigned; // a set of indices of a short cycle

Mask maskOf(const CircularRange& range)
{
    Mask mask = 0;
    for (int i = range.begin(); i < range.end(); ++i) mask |= 1u << i % range.cycleSize();
    return mask;
}

/// The arcs into which a set falls, each as a set, the one that holds or follows `from` first.
std::vector<Mask> arcsOf(Mask mask, int from, int cycle)
{
    const Mask all = (1u << cycle) - 1;
    if (mask == 0 || mask == all) return std::vector<Mask>(mask != 0, mask);
    std::vector<Mask> arcs;
    const auto before = [cycle](int i) { return (i + cycle - 1) % cycle; };
    while (!(mask >> from & 1)) from = (from + 1) % cycle;
    while (mask >> before(from) & 1) from = before(from);
    for (int i = from; i < from + cycle; ++i) {
        if (!(mask >> i % cycle & 1)) continue;
        if (!(mask >> before(i) & 1)) arcs.push_back(0);
        arcs.back() |= 1u << i % cycle;
    }
    return arcs;
}

std::vector<CircularRange> allRanges(int cycle)
{
    std::vector<CircularRange> ranges;
    for (int begin = 0; begin < cycle; ++begin)
        for (int size = 0; size <= cycle; ++size) ranges.emplace_back(begin, begin + size, cycle);
    return ranges;
}

TEST(CircularRange, TakesAnyTurn)
{
    for (int cycle = 1; cycle <= 7; ++cycle)
        for (int begin = -15; begin < 15; ++begin)
            for (int length = -cycle; length < 15; ++length) {
                const CircularRange range(begin, begin + length, cycle);
                EXPECT_EQ(range.begin(), (begin + 21 * cycle) % cycle);
                EXPECT_EQ(range.size(), length < 0 ? length + cycle : std::min(length, cycle));
                EXPECT_EQ(range.end(), range.begin() + range.size());
                const CircularRange first = range.firstHalf(), second = range.secondHalf();
                EXPECT_EQ(first.size(), range.size() / 2);
                EXPECT_EQ(maskOf(first) | maskOf(second), maskOf(range));
                EXPECT_EQ(first.size() + second.size(), range.size());
            }
    for (const int cycle : {0, -3}) {
        const CircularRange none(1, 2, cycle);
        EXPECT_TRUE(none.size() == 0 && !none.contains(1) && none.intersect(none).size() == 0);
    }
    const CircularRange large(2147483000, 100, 2147483647);
    EXPECT_TRUE(large.contains(2147483640) && large.contains(99) && large.contains(-600) && !large.contains(100));
}

TEST(CircularRange, PairsBehaveAsSetsDo)
{
    for (int cycle = 1; cycle <= 7; ++cycle)
        for (const CircularRange& a : allRanges(cycle))
            for (const CircularRange& b : allRanges(cycle)) {
                SCOPED_TRACE(testing::Message() << "[" << a.begin() << "," << a.end() << ") [" << b.begin() << ","
                                                << b.end() << ") of " << cycle);
                const Mask ma = maskOf(a), mb = maskOf(b);
                for (int i = -cycle; i < 2 * cycle; ++i) ASSERT_EQ(a.contains(i), bool(ma >> (i + cycle) % cycle & 1));
                ASSERT_EQ(a.contains(b), (mb & ~ma) == 0);

                // What is common may be two arcs: then the one met first from the begin of `a`.
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
                Mask left = 0;
                int reached = 0; // behind the begin of `a`
                for (const CircularRange& piece : rest) {
                    const int offset = (piece.begin() - a.begin() + cycle) % cycle;
                    ASSERT_GE(offset, reached);
                    reached = offset + piece.size();
                    left |= maskOf(piece);
                }
                ASSERT_EQ(left, ma & ~mb);
                ASSERT_LE(rest.size(), 2);
            }
}

TEST(CircularRange, ListsAreJoinedAndCutAsSetsAre)
{
    znTest::Random random(1);
    for (int round = 0; round < 20000; ++round) {
        const int cycle = 1 + random.below(12);
        zn::vector<CircularRange> ranges;
        Mask covered = 0;
        for (int i = random.below(6); i > 0; --i) {
            const int begin = random.below(cycle);
            ranges.append(CircularRange(begin, begin + random.below(cycle + 1) * random.below(2), cycle));
            covered |= maskOf(ranges.back());
        }
        const CircularRange cut(random.below(cycle), random.below(cycle), cycle);
        zn::vector<CircularRange> rest = ranges;
        subtract(rest, cut);
        Mask left = 0;
        for (const CircularRange& piece : rest) left |= maskOf(piece);
        ASSERT_EQ(left, covered & ~maskOf(cut));

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

TEST(BitField32, HoldsThirtyTwoFlags)
{
    znUtil::BitField32 flags;
    EXPECT_FALSE(flags.any());
    for (const int bit : {0, 5, 31, 5}) flags.set(bit, true);
    EXPECT_TRUE(flags.value() == 0x80000021u && flags[31] && !flags[30] && flags.count() == 3 && flags.any());
    flags.set(31, false);
    EXPECT_EQ((((flags & ~znUtil::BitField32(1)) ^ znUtil::BitField32(3)) | znUtil::BitField32(4)).value(), 0x27u);
}

TEST(Transform2d, KeepsTheOrderOfScaleAndOffset)
{
    float u = 1, v = 2;
    znUtil::Transform2d{2, 3, 10, 20, 0}.apply(u, v);
    EXPECT_TRUE(u == 12 && v == 26);
    znUtil::Transform2d{2, 3, 10, 20, 7}.apply(u, v);
    EXPECT_TRUE(u == 44 && v == 138);
}

} // namespace
