#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "tests/support/moving_allocator.h"
#include "tests/support/random.h"
#include "znGeom/foundation/mesh.h"

namespace {

using namespace znGeom;
using znTest::MovingAllocator;
using znTest::Random;
using Ints = std::vector<int>;
using AllocatorReference = zn::Reference<ArrayAllocator>;

void expectEqual(const BitVector& bits, const std::vector<bool>& model)
{
    ASSERT_EQ(bits.getSize(), int(model.size()));
    ASSERT_EQ(bits.getNumWords(), int(model.size() + 31) / 32);
    ASSERT_EQ(bits.getNumSetBits(), std::count(model.begin(), model.end(), true));
    for (int i = 0; i < 32 * bits.getNumWords(); ++i) // beyond the size all is clear
        ASSERT_EQ((bits.getWords()[i / 32] >> i % 32 & 1) != 0, i < bits.getSize() && model[size_t(i)]);
}

TEST(BitVector, FollowsAModelThroughRandomOperations)
{
    Random random(1);
    BitVector bits, other;
    std::vector<bool> model, otherModel;
    int bit = 0;
    const std::function<void()> operations[] = {
        // Each on the bits and on the model, the first two more often than the others.
        [&] { bits.clearBit(bit), model[size_t(bit)] = false; },
        [&] {
            const int both[3] = {bit, random.below(bits.getSize()), bit};
            bits.setBits(3, both);
            for (const int each : both) model[size_t(each)] = true;
        },
        [&] {
            const int size = random.oneIn(9) ? 0 : random.below(140);
            bits.resize(size), model.resize(size_t(size));
        },
        [&] { bits.swap(other), model.swap(otherModel); },
        [&] {
            bits |= other;
            model.resize(std::max(model.size(), otherModel.size()));
            for (size_t i = 0; i < otherModel.size(); ++i) model[i] = model[i] || otherModel[i];
        },
        [&] { other = bits, otherModel = model; },
        [&] { other = std::move(bits), otherModel = model, model.clear(); },
        [&] { bits.clearBits(), model.assign(model.size(), false); },
        [&] { bits.setAllBits(), model.assign(model.size(), true); }};
    for (int step = 0; step < 20000; ++step) {
        if (model.empty()) bits.resize(1 + step % 140), model.resize(size_t(1 + step % 140));
        bit = random.below(bits.getSize());
        ASSERT_EQ(bits.isSet(bit), model[size_t(bit)]);
        operations[random.below(3) ? random.below(2) : random.below(int(std::size(operations)))]();
        expectEqual(bits, model);
        ASSERT_EQ(bits == other, model == otherModel);
    }
}

std::vector<Ints> setsOf(const ArrayOfSets& table)
{
    std::vector<Ints> sets;
    for (int set = 0; set < table.getNumSets(); ++set)
        sets.emplace_back(table.getSet(set), table.getSet(set) + table.getSetSize(set));
    return sets;
}

TEST(ArrayOfSets, HoldsThePairsItWasMadeFrom)
{
    Random random(2);
    for (int round = 0; round < 200; ++round) {
        const int numSets = random.below(12), numPairs = numSets == 0 ? 0 : random.below(60), numElements = 9;
        Ints pairs;
        std::vector<Ints> model(static_cast<size_t>(numSets)), inverse(static_cast<size_t>(numElements));
        for (int i = 0; i < numPairs; ++i) {
            pairs.push_back(random.below(numSets)), pairs.push_back(random.below(numElements));
            model[size_t(pairs.end()[-2])].push_back(pairs.back());
        }
        for (int set = 0; set < numSets; ++set)
            for (const int element : model[size_t(set)]) inverse[size_t(element)].push_back(set);
        ArrayOfSets table(3, 5), turned;
        table.assignFromPairs(numSets, numPairs, pairs.data());
        EXPECT_EQ(setsOf(table), model);
        turned.assignInverse(numElements, table);
        EXPECT_EQ(setsOf(turned), inverse);

        const ArrayOfSets moved = std::move(table);
        EXPECT_TRUE(table.getNumSets() + table.elements.size() == 0 && setsOf(moved) == model);
        turned.assignInverse(numSets, turned); // twice the inverse: the same sets, sorted
        for (Ints& set : model) std::sort(set.begin(), set.end());
        EXPECT_EQ(setsOf(turned), model);
    }
}

TEST(Remap, MapsDeletesAndNumbers)
{
    Remap map(4, 9);
    map.set(1, 8);
    map.resize(6, 10);
    int values[] = {1, 0, 1, 5, 2, 1};
    map(values, 5);
    EXPECT_TRUE(std::equal(values, values + 6, std::begin({8, -1, 8, -1, -1, 1})));
    map.setSequential();
    EXPECT_TRUE(map(5) == 5 && map.range == 6);

    Random random(3);
    for (const int size : {0, 1, 32, 70, 200}) {
        BitVector deleted(size);
        for (int i = 0; i < size; ++i)
            if (i % 70 > 35 || random.oneIn(3)) deleted.setBit(i);
        map.setDeleteMap(deleted);
        int next = 0;
        for (int i = 0; i < size; ++i) EXPECT_EQ(map(i), deleted.isSet(i) ? -1 : next++);
        EXPECT_TRUE(map.range == next && map.getDomainSize() == size);
    }
}

TEST(Adjacency, TakesOverItsTable)
{
    const int pairs[] = {0, 4, 2, 1, 2, 0}, triangles[] = {10, 11, 12, 20, 21, 22};
    ArrayOfSets table;
    table.assignFromPairs(3, 3, pairs);
    const MeshAdjTris around(table);
    EXPECT_EQ(table.getNumSets(), 0);
    int corners[6] = {};
    around.copyTriangles(2, corners, triangles);
    EXPECT_TRUE(std::equal(corners, corners + 6, std::begin({20, 21, 22, 10, 11, 12})));
}

Ints contents(const Array<int>& array) { return Ints(array.read(), array.read() + array.size()); }

Array<int> numbered(int first, int size)
{
    Array<int> array(size);
    for (int i = 0; i < size; ++i) array[i] = first + i;
    return array;
}

TEST(Array, KeepsTheBeginningBehindOneFreeSlotOfABlockOfTwoMore)
{
    for (const bool elsewhere : {false, true}) {
        Array<int> array = numbered(5, 10);
        const zn::Reference<MovingAllocator> allocator = new MovingAllocator;
        if (elsewhere) array.setAllocator(allocator.get());
        EXPECT_EQ(array.blockBytes(10), 12 * sizeof(int));
        const void* block = elsewhere ? array.allocator()->read(array) : array.block;
        EXPECT_EQ(array.read(), static_cast<const int*>(block) + 1);
        array.resize(1000);
        array.resize(4);
        EXPECT_EQ(contents(array), contents(numbered(5, 4)));
        array.resize(0);
        EXPECT_TRUE(!array.read() && !array.write() && allocator->numBlocks() == 0);
        array.resize(-5);
        EXPECT_EQ(array.size(), 0);
        array.resize(2);
        array.fill(9);
        EXPECT_EQ(contents(array), (Ints{9, 9}));
        EXPECT_TRUE(allocator->numBlocks() == (elsewhere ? 1 : 0) && allocator->numFaults() == 0);
    }
}

TEST(Array, SwapsCopiesAndMovesWhoeverKeepsTheContents)
{
    for (int kinds = 0; kinds < 9; ++kinds) {
        const zn::Reference<MovingAllocator> allocators[3] = {nullptr, new MovingAllocator, new MovingAllocator};
        const AllocatorReference ours(allocators[kinds % 3].get()), theirs(allocators[kinds / 3].get());
        for (const auto& [size, otherSize] : {std::pair(3, 8), std::pair(8, 3), std::pair(0, 4), std::pair(4, 4)}) {
            Array<int> a = numbered(10, size), b = numbered(50, otherSize);
            const Ints first = contents(a), second = contents(b);
            a.setAllocator(ours), b.setAllocator(theirs);
            const int* const blockBefore = a.read();
            a.swap(b);
            EXPECT_TRUE(contents(a) == second && contents(b) == first);
            EXPECT_TRUE(a.allocator() == ours && b.allocator() == theirs);
            EXPECT_TRUE(ours || theirs || b.read() == blockBefore);
            a = b;
            b.fill(77);
            EXPECT_TRUE(contents(a) == first && a.allocator() == ours);
            const Array<int> copied = a, &alias = a;
            EXPECT_TRUE(contents(copied) == first && !copied.allocator());
            a = alias;
            Array<int> moved = std::move(a);
            EXPECT_EQ(contents(moved), first);
            a.resize(3);
            a.fill(1);
            a = std::move(moved);
            EXPECT_EQ(contents(a), first);
            a.setAllocator(theirs);
            EXPECT_EQ(contents(a), first);
        }
        for (const auto& allocator : {allocators[1], allocators[2]})
            EXPECT_TRUE(allocator->numBlocks() == 0 && allocator->numFaults() == 0);
    }
}

} // namespace
