#include "znGeom/planar/shapes/pack.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <regex>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "tests/support/recorder.h"
#include "znGeom/foundation/linear/tolerance.h"

using namespace znGeom;
using namespace znLinear;
using znTest::Random;

namespace {

using Items = zn::vector<Range2d>;

Range2d sized(double width, double height) { return {Point2(0, 0), Point2(width, height)}; }

double largerSide(const Range2d& item) { return std::max(item.size().x, item.size().y); }

bool sameBits(const Items& a, const Items& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), sizeof(Range2d) * size_t(a.size())) == 0;
}

/// The tree itself, walked from the root for each rectangle. A rectangle that is larger than a leaf by exactly the
/// tolerance does not fit.
struct PlainNode
{
    Range2d range;
    std::unique_ptr<PlainNode> first, second;
    bool occupied = false;

    PlainNode* insert(const Range2d& item)
    {
        if (first) {
            PlainNode* const found = first->insert(item);
            return found ? found : second->insert(item);
        }
        const double dx = range.size().x - item.size().x, dy = range.size().y - item.size().y;
        if (occupied || !(dx > -epsilonTol) || !(dy > -epsilonTol)) return nullptr;
        if (epsilonTol > std::fabs(dx) && epsilonTol > std::fabs(dy)) {
            occupied = true;
            return this;
        }
        first.reset(new PlainNode{range, {}, {}});
        second.reset(new PlainNode{range, {}, {}});
        const int axis = dx > dy ? 0 : 1;
        first->range[axis].max = second->range[axis].min = range[axis].min + item.size()[axis];
        return first->insert(item);
    }
};

bool plainTry(Items& items)
{
    if (largerSide(items.back()) > 1.0) return false;
    PlainNode root{Range2d::unitSquare, {}, {}};
    for (Range2d& item : items) {
        const PlainNode* const found = root.insert(item);
        if (!found) return false;
        item = found->range;
    }
    return true;
}

Items plainPack(const Items& items, int iterations)
{
    std::vector<int> order(size_t(items.size()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return largerSide(items[a]) > largerSide(items[b]); });
    Items working, result(items.size());
    for (const int i : order) working.append(items[i]);
    const double shrink = double(std::pow(0.499f, 1.0f / float(iterations)));
    while (!plainTry(working))
        for (Range2d& item : working) item = sized(item.size().x * shrink, item.size().y * shrink);
    Range2d bound;
    for (const Range2d& item : working) bound.include(item);
    const double factor = 1.0 / largerSide(bound);
    for (int i = 0; i < items.size(); ++i) {
        Range2d& item = result[order[size_t(i)]] = working[i];
        if (factor > 1.01 && factor < HUGE_VAL)
            item.x.min *= factor, item.x.max *= factor, item.y.min *= factor, item.y.max *= factor;
    }
    return result;
}

/// Sets of several kinds: even sizes, few sizes, slivers, sizes on a grid that tile, sizes a tolerance apart.
Items randomItems(Random& random, int count)
{
    const int kind = random.below(5);
    const double scale = random.real(0.5, 1.6) / std::sqrt(count), low = random.real(0, 0.5);
    Items items;
    for (int i = 0; i < count; ++i) {
        const auto side = [&]() -> double {
            if (kind == 0) return scale * random.real(low, 2);
            if (kind == 1) return scale * (1 + random.below(3));
            if (kind == 2) return scale * std::pow(2, random.real(-9, 3));
            if (kind == 3) return random.below(5) / 16.0;
            return scale + epsilonTol * 0.5 * random.below(7);
        };
        const double width = side(), height = side(), x = random.real(-9, 9);
        items.append(Range2d(Point2(x, 0), Point2(x + width, height)));
    }
    return items;
}

int pairsThatOverlap(const Items& places)
{
    int count = 0;
    for (int i = 0; i < places.size(); ++i)
        for (int k = 0; k < i; ++k)
            count += std::min(places[i].x.max, places[k].x.max) - std::max(places[i].x.min, places[k].x.min) > 1e-9 &&
                     std::min(places[i].y.max, places[k].y.max) - std::max(places[i].y.min, places[k].y.min) > 1e-9;
    return count;
}

void expectPlace(const Range2d& place, const Range2d& expected)
{
    for (int axis = 0; axis < 2; ++axis) {
        EXPECT_NEAR(place[axis].min, expected[axis].min, 1e-12);
        EXPECT_NEAR(place[axis].max, expected[axis].max, 1e-12);
    }
}

} // namespace

TEST(Pack, PutsThingsWhereThePlainDescentPutsThem)
{
    Random random(94);
    int numFull = 0, numDifferent = 0;
    for (int set = 0; set < 10000; ++set) {
        const Items items = randomItems(random, set % 1000 == 0 ? 1500 : 1 + random.below(40));
        for (const bool isSorted : {false, true}) {
            Items mine = items;
            if (isSorted)
                std::stable_sort(mine.begin(), mine.end(),
                                 [](const Range2d& a, const Range2d& b) { return largerSide(a) > largerSide(b); });
            Items plain = mine;
            const bool isPacked = pack(mine);
            numFull += isPacked;
            numDifferent += isPacked != plainTry(plain) || !sameBits(mine, plain);
        }
        const int iterations = 1 + random.below(30);
        Items mine = items;
        pack(mine, iterations);
        numDifferent += !sameBits(mine, plainPack(items, iterations));
    }
    EXPECT_EQ(numDifferent, 0);
    EXPECT_GT(numFull, 2000); // both answers were asked for
    EXPECT_LT(numFull, 18000);
}

TEST(Pack, TriesAtTheGivenSizes)
{
    Items squares(4, sized(0.5, 0.5));
    EXPECT_TRUE(pack(squares));
    expectPlace(squares[1], {{0.5, 0}, {1, 0.5}});
    expectPlace(squares[3], {{0.5, 0.5}, {1, 1}});

    // Equal slack is cut along y first, so what is beside the first is only as high as it.
    Items cells = {sized(0.5, 0.5), sized(0.5, 0.6), sized(0, 0.4)};
    EXPECT_FALSE(pack(cells));
    EXPECT_EQ(cells[1], sized(0.5, 0.6));
    cells[1] = sized(0.6, 0.5);
    EXPECT_TRUE(pack(cells));
    expectPlace(cells[1], {{0, 0.5}, {0.6, 1}});
    expectPlace(cells[2], {{0.5, 0}, {0.5, 0.4}});

    Items last = {sized(0.5, 0.5), sized(1.5, 0.1)}, first = {sized(0.5, 0.5), sized(1.5, 0.1), sized(0.1, 0.1)};
    const Items untouched = last;
    EXPECT_FALSE(pack(last));
    EXPECT_EQ(last, untouched);
    last[0] = Range2d(Point2(3, 3), Point2(3.5, 3.5));
    first[0] = last[0];
    EXPECT_FALSE(pack(last));
    EXPECT_EQ(last[0].x.min, 3);
    EXPECT_FALSE(pack(first));
    EXPECT_EQ(first[0], sized(0.5, 0.5));
    EXPECT_EQ(first[1], sized(1.5, 0.1));
}

TEST(Pack, ShrinksUntilAllFitsAndFillsTheSquare)
{
    Items one = {Range2d(Point2(7, 7), Point2(7.5, 7.25))};
    pack(one, 10);
    expectPlace(one[0], sized(1, 0.5));

    znUtil::Progress progress;
    Items large = {sized(2, 1)};
    PackResult result = pack(large, 100, progress); // 0.499 ^ (99 / 100) is still above a half
    EXPECT_EQ(result.attempts, 101);
    EXPECT_EQ(result.scale, 1);
    EXPECT_NEAR(large[0].x.max, 0.998, 1e-5);

    Items two = {sized(1, 1), sized(1, 1)};
    result = pack(two, 7, progress);
    EXPECT_EQ(result.attempts, 8);
    EXPECT_NEAR(result.coverage, 0.499f, 1e-6f);
    EXPECT_NEAR(two[1].x.min, 0.499, 1e-6); // beside it, and too near to the far side for a change
    EXPECT_EQ(result.scale, 1);

    Items tiny = {sized(3e-5, 1e-5), sized(1e-5, 2e-5)};
    result = pack(tiny, 7, progress);
    EXPECT_EQ(result.attempts, 1);
    EXPECT_NEAR(result.scale, 1 / 3e-5, 1e-6);
    expectPlace(tiny[0], sized(1, 1.0 / 3));
    expectPlace(tiny[1], {{0, 1.0 / 3}, {1.0 / 3, 1}});
}

TEST(Pack, PlacesManyWithoutOverlap)
{
    Random random(4);
    Items items;
    for (int i = 0; i < 1000; ++i) items.append(sized(random.real(0.01, 0.08), random.real(0.01, 0.08)));
    Items places = items;
    znUtil::Progress progress;
    const PackResult result = pack(places, 500, progress);
    EXPECT_EQ(pairsThatOverlap(places), 0);
    const double scale = double(result.coverage) * result.scale;
    double area = 0;
    for (int i = 0; i < items.size(); ++i) {
        EXPECT_TRUE(Range2d::unitSquare.contains({places[i].x.min, places[i].y.min}, 1e-9));
        EXPECT_TRUE(Range2d::unitSquare.contains({places[i].x.max, places[i].y.max}, 1e-9));
        EXPECT_NEAR(places[i].size().x, items[i].size().x * scale, 1e-6);
        EXPECT_NEAR(places[i].size().y, items[i].size().y * scale, 1e-6);
        area += places[i].area();
    }
    EXPECT_GT(area, 0.9);
}

TEST(Pack, GivesEqualSidesTheirPlacesByIndex)
{
    // Many larger sides are equal, smaller ones are not: another order of equals would be seen.
    Random random(5);
    Items items, alike;
    for (int i = 0; i < 3000; ++i) {
        const double longer = 0.01 * (1 + random.below(3)), shorter = random.real(0.001, 0.01);
        items.append(random.oneIn(2) ? sized(longer, shorter) : sized(shorter, longer));
        const double x = random.real(), y = random.real();
        alike.append(Range2d(Point2(x, y), Point2(x, y)));
        alike[i].x.max += 0x1p-6, alike[i].y.max += 0x1p-7;
        alike[i].x.min = alike[i].x.max - 0x1p-6, alike[i].y.min = alike[i].y.max - 0x1p-7;
    }
    znUtil::Progress progress;
    const Items expected = plainPack(items, 20);
    for (const int numThreads : {1, 2, 7}) {
        znUtil::ThreadPool pool(numThreads);
        Items places = items, alikePlaces = alike;
        pack(places, 20, progress, pool);
        EXPECT_TRUE(sameBits(places, expected)) << numThreads;
        pack(alikePlaces, 20, progress, pool);
        EXPECT_LT(alikePlaces[0].x.min, alikePlaces[1].x.min) << numThreads;
        EXPECT_EQ(alikePlaces[0].y.min, alikePlaces[1].y.min) << numThreads;
    }
}

TEST(Pack, LogsTheFirstSixInOrderOfSize)
{
    const znTest::LogRecorder log;
    Items items;
    for (int i = 0; i < 8; ++i) items.append(sized(0.01 * (i + 1), 0.005));
    items[7] = Range2d(Point2(1, 2), Point2(1.08, 2.005));
    pack(items, 10);
    ASSERT_EQ(log.lines().size(), 14u);
    EXPECT_EQ(log.lines()[0], "Packed (1.0000,2.0000)-(1.0800,2.0050) to");
    EXPECT_EQ(log.lines()[1], " (0.0000,0.0000)-(0.0800,0.0050)\n");
    EXPECT_EQ(log.lines()[2], "Packed (0.0000,0.0000)-(0.0700,0.0050) to");
    EXPECT_EQ(log.lines()[3], " (0.0800,0.0000)-(0.1500,0.0050)\n");
    EXPECT_EQ(log.lines()[12], "Scaling packing by 2.78\n");
    EXPECT_TRUE(std::regex_match(log.lines()[13], std::regex("Packed 8 items with 1\\.00 coverage in 1 iterations in "
                                                             "\\d+\\.\\d\\d seconds\\.\n")));
    Items full = {sized(1, 1)};
    pack(full, 10);
    EXPECT_EQ(log.count("Scaling"), 1);
}

TEST(Pack, EndsOnEveryInput)
{
    Items none;
    EXPECT_TRUE(pack(none));
    pack(none, 5);

    znUtil::Progress progress;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Range2d endless = sized(1, 1), nowhere = sized(1, 1);
    endless.y.max = infinity;
    nowhere.x.min = nowhere.x.max = infinity; // a size that is not a number
    for (const Range2d& odd : {endless, nowhere}) {
        Items items = {sized(0.1, 0.1), odd, sized(0.1, 0.1)};
        EXPECT_EQ(pack(items, 100, progress).attempts, 0);
        EXPECT_EQ(items[0], sized(0.1, 0.1));
        EXPECT_EQ(items[1], odd);
        EXPECT_FALSE(pack(items));
    }
    for (const int iterations : {0, -1, INT_MIN}) {
        Items items = {sized(3, 3)};
        EXPECT_EQ(pack(items, iterations, progress).attempts, 0);
        EXPECT_EQ(items[0], sized(3, 3));
    }

    Items points(3, sized(0, 0)), line = {sized(0, 0.5), sized(0, 0.5)};
    EXPECT_EQ(pack(points, 10, progress).scale, 1);
    EXPECT_EQ(points[2], sized(0, 0));
    EXPECT_EQ(pack(line, 10, progress).attempts, 1);
    EXPECT_NEAR(line[0].y.size() + line[1].y.size(), 1, 1e-12);

    Items huge = {sized(1e308, 3), sized(2, 1e308)};
    EXPECT_GT(pack(huge, 50, progress).attempts, 50000);
    EXPECT_EQ(pairsThatOverlap(huge), 0);

    // From here on the step of one try would round to none at all.
    Items slow = {sized(1, 0.5001), sized(1, 0.5001)};
    EXPECT_NEAR(pack(slow, 24000000, progress).attempts, 3356, 4);
    slow = {sized(1, 0.5001), sized(1, 0.5001)};
    EXPECT_NEAR(pack(slow, INT_MAX, progress).attempts, 3356, 4);
    slow = {sized(100, 100)};
    EXPECT_NEAR(pack(slow, INT_MAX, progress).attempts, std::log(100) * 0x1p24, 10);

    // Larger than the one free leaf by exactly the tolerance, which counts as too large.
    Items edge = {sized(epsilonTol, 0.5), sized(1 - epsilonTol, 1), sized(2 * epsilonTol, 0.5)};
    EXPECT_FALSE(pack(edge));
}

TEST(Pack, LeavesItemsAloneWhenCancelled)
{
    znUtil::Progress progress;
    progress.cancel();
    Items items(5, sized(0.7, 0.7));
    EXPECT_EQ(pack(items, 10, progress).attempts, 0);
    EXPECT_EQ(items[4], sized(0.7, 0.7));
    progress.reset();
    EXPECT_GT(pack(items, 10, progress).attempts, 1);
}
