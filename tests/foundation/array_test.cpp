#include "znGeom/foundation/mesh/array.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/moving_allocator.h"
#include "tests/support/random.h"

namespace {

using znGeom::Array;
using znGeom::ArrayAllocator;
using znTest::MovingAllocator;
using AllocatorReference = zn::Reference<ArrayAllocator>;

std::vector<int> contents(const Array<int>& array)
{
    return std::vector<int>(array.read(), array.read() + array.size());
}

Array<int> numbered(int first, int size)
{
    Array<int> array(size);
    for (int i = 0; i < size; ++i) array[i] = first + i;
    return array;
}

std::vector<int> numbers(int first, int size)
{
    std::vector<int> expected;
    for (int i = 0; i < size; ++i) expected.push_back(first + i);
    return expected;
}

TEST(Array, KeepsElementZeroInTheSecondSlotOfABlockOfTwoMore)
{
    for (const bool elsewhere : {false, true}) {
        Array<double> array;
        if (elsewhere) array.setAllocator(new MovingAllocator);
        EXPECT_EQ(array.write(), nullptr);
        array.resize(10);
        EXPECT_EQ(array.blockBytes(10), 12 * sizeof(double));
        const void* block = elsewhere ? array.allocator()->read(array) : array.block;
        EXPECT_EQ(array.read(), static_cast<const double*>(block) + 1);
    }
}

TEST(Array, ResizeKeepsTheBeginning)
{
    for (const bool elsewhere : {false, true}) {
        Array<int> array = numbered(5, 10);
        const zn::Reference<MovingAllocator> allocator = new MovingAllocator;
        if (elsewhere) array.setAllocator(allocator.get());
        array.resize(1000);
        EXPECT_EQ(std::vector<int>(array.read(), array.read() + 10), numbers(5, 10));
        array.resize(4);
        EXPECT_EQ(contents(array), numbers(5, 4));
        array.resize(0);
        EXPECT_EQ(array.read(), nullptr);
        EXPECT_EQ(allocator->numBlocks(), 0);
        array.resize(-5);
        EXPECT_EQ(array.size(), 0);
        array.resize(2);
        array.fill(9);
        EXPECT_EQ(contents(array), (std::vector<int>{9, 9}));
        EXPECT_EQ(allocator->numBlocks(), elsewhere ? 1 : 0);
        EXPECT_EQ(allocator->numFaults(), 0);
    }
}

TEST(Array, SwapsCopiesAndMovesWhoeverKeepsTheContents)
{
    for (int kinds = 0; kinds < 9; ++kinds) {
        const zn::Reference<MovingAllocator> allocators[3] = {nullptr, new MovingAllocator, new MovingAllocator};
        MovingAllocator* const ours = allocators[kinds % 3].get();
        MovingAllocator* const theirs = allocators[kinds / 3].get();
        for (const auto& [size, otherSize] : {std::pair(3, 8), std::pair(8, 3), std::pair(0, 4), std::pair(4, 4)}) {
            Array<int> a = numbered(10, size), b = numbered(50, otherSize);
            a.setAllocator(AllocatorReference(ours));
            b.setAllocator(AllocatorReference(theirs));
            EXPECT_EQ(contents(a), numbers(10, size));
            const int* const blockBefore = a.read();
            a.swap(b);
            EXPECT_EQ(contents(a), numbers(50, otherSize));
            EXPECT_EQ(contents(b), numbers(10, size));
            EXPECT_TRUE(a.allocator() == ours && b.allocator() == theirs);
            if (!ours && !theirs) {
                EXPECT_EQ(b.read(), blockBefore);
            }
            a = b;
            b.fill(77);
            EXPECT_EQ(contents(a), numbers(10, size));
            EXPECT_TRUE(a.allocator() == ours);
            const Array<int> copied = a, &alias = a;
            EXPECT_FALSE(copied.allocator());
            a = alias;
            EXPECT_EQ(contents(a), contents(copied));
            Array<int> moved = std::move(a);
            EXPECT_EQ(contents(moved), contents(copied));
            a.resize(3);
            a.fill(1);
            a = std::move(moved);
            EXPECT_EQ(contents(a), contents(copied));
            a.setAllocator(AllocatorReference(theirs));
            EXPECT_EQ(contents(a), contents(copied));
        }
        for (const auto& allocator : {allocators[1], allocators[2]})
            EXPECT_TRUE(allocator->numBlocks() == 0 && allocator->numFaults() == 0 && allocator->getCount() == 2);
    }
}

} // namespace
