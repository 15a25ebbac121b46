#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "tests/support/random.h"
#include "znGeom/foundation/mesh_model.h"

namespace {

using namespace znGeom;
using znTest::Random;
using Ints = std::vector<int>;

void expectEqual(const BitVector& bits, const std::vector<bool>& model)
{
    ASSERT_EQ(bits.getSize(), int(model.size()));
    ASSERT_EQ(bits.getNumWords(), int(model.size() + 31) / 32);
    ASSERT_EQ(bits.getNumSetBits(), std::count(model.begin(), model.end(), true));
    for (int i = 0; i < 32 * bits.getNumWords(); ++i) { // beyond the size all is clear
        const bool expected = i < bits.getSize() && model[size_t(i)];
        ASSERT_EQ((bits.getWords()[i / 32] >> i % 32 & 1) != 0, expected);
        ASSERT_TRUE(i >= bits.getSize() || bits.isSet(i) == expected);
    }
}

TEST(BitVector, FollowsAModelThroughRandomOperations)
{
    Random random(1);
    BitVector bits, other;
    std::vector<bool> model, otherModel;
    for (int step = 0; step < 20000; ++step) {
        const int size = bits.getSize(), bit = random.below(std::max(size, 1));
        switch (random.below(12)) {
        case 0: {
            const int resized = random.oneIn(20) ? 0 : random.below(140);
            bits.resize(resized);
            model.resize(size_t(resized));
            break;
        }
        case 1:
            bits.swap(other), model.swap(otherModel);
            break;
        case 2:
            bits |= other;
            model.resize(std::max(model.size(), otherModel.size()));
            for (size_t i = 0; i < otherModel.size(); ++i) model[i] = model[i] || otherModel[i];
            break;
        case 3:
            other = bits, otherModel = model;
            break;
        case 4:
            if (random.oneIn(5)) bits.setAllBits(), model.assign(model.size(), true);
            if (random.oneIn(2)) bits.clearBits(), model.assign(model.size(), false);
            break;
        case 5:
        case 6:
        case 7:
            if (size > 0) bits.clearBit(bit), model[size_t(bit)] = false;
            break;
        default:
            if (size == 0) break;
            const int both[3] = {bit, random.below(size), bit};
            bits.setBits(3, both);
            for (const int each : both) model[size_t(each)] = true;
        }
        expectEqual(bits, model);
        ASSERT_EQ(bits == other, model == otherModel);
    }
}

TEST(BitVector, IsUsableAfterAMove)
{
    BitVector bits(100);
    bits.setAllBits();
    const BitVector moved = std::move(bits);
    expectEqual(moved, std::vector<bool>(100, true));
    bits.resize(40);
    bits.clearBits();
    bits.setBit(39);
    EXPECT_EQ(bits.getNumSetBits(), 1);
    bits = BitVector(moved);
    BitVector sink = std::move(bits);
    EXPECT_EQ(bits.getNumWords(), (bits.getSize() + 31) / 32);
}

Ints setOf(const ArrayOfSets& table, int set)
{
    return Ints(table.getSet(set), table.getSet(set) + table.getSetSize(set));
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
        turned.assignInverse(numElements, table);
        ASSERT_EQ(table.getNumSets(), numSets);
        for (int set = 0; set < numSets; ++set) EXPECT_EQ(setOf(table, set), model[size_t(set)]);
        for (int set = 0; set < numElements; ++set) EXPECT_EQ(setOf(turned, set), inverse[size_t(set)]);

        ArrayOfSets copied = table, moved = std::move(table);
        EXPECT_EQ(table.getNumSets() + table.elements.size(), 0);
        table.assignInverse(numElements, copied);
        table.swap(copied);
        copied.assignInverse(numSets, copied); // twice the inverse: the same sets, sorted
        for (int set = 0; set < numSets; ++set) {
            std::sort(model[size_t(set)].begin(), model[size_t(set)].end());
            EXPECT_EQ(setOf(copied, set), model[size_t(set)]);
            EXPECT_EQ(setOf(table, set), setOf(moved, set));
        }
    }
}

TEST(Remap, MapsDeletesAndNumbers)
{
    Remap map(4, 9);
    EXPECT_TRUE(map.getDomainSize() == 4 && map.range == 9);
    map.set(1, 8);
    map.resize(6, 10);
    const int expected[6] = {-1, 8, -1, -1, -1, -1};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(map(i), expected[i]);
    int values[5] = {1, 0, 1, 5, 1};
    map(values, 4);
    EXPECT_TRUE(std::equal(values, values + 5, std::begin({8, -1, 8, -1, 1})));
    map.setSequential();
    EXPECT_TRUE(map(5) == 5 && map.range == 6);

    BitVector deleted(70);
    map.setDeleteMap(deleted);
    EXPECT_TRUE(map.getDomainSize() == 70 && map.range == 70 && map(69) == 69);
    for (const int bit : {0, 33, 69}) deleted.setBit(bit);
    map.setDeleteMap(deleted);
    EXPECT_TRUE(map.range == 67 && map(0) == -1 && map(1) == 0 && map(32) == 31 && map(33) == -1 && map(34) == 32);
    deleted.setAllBits();
    map.setDeleteMap(deleted);
    EXPECT_EQ(map.range, 0);
    EXPECT_EQ(std::count(map.data(), map.data() + 70, -1), 70);
    map.setDeleteMap(BitVector());
    EXPECT_EQ(map.getDomainSize(), 0);
    MeshRemap both(&map, nullptr);
    EXPECT_TRUE(both.vertices() == &map && both.triangles() == nullptr);
}

TEST(Adjacency, ObjectsTakeOverWhatTheyAreGiven)
{
    const int pairs[] = {0, 4, 2, 1, 2, 0};
    ArrayOfSets table;
    table.assignFromPairs(3, 3, pairs);
    MeshAdjTris around(table), other;
    EXPECT_EQ(table.getNumSets(), 0);
    around.swap(other);
    EXPECT_EQ(around.getNumVertices(), 0);
    EXPECT_TRUE(other.numTris(0) == 1 && other.numTris(1) == 0 && other.triIndices(2)[1] == 0);
    const int triangles[] = {10, 11, 12, 20, 21, 22};
    int corners[6] = {};
    other.copyTriangles(2, corners, triangles);
    EXPECT_TRUE(std::equal(corners, corners + 6, std::begin({20, 21, 22, 10, 11, 12})));

    // Vertex 1 is used by nobody.
    const auto allocated = [](std::initializer_list<int> values) {
        int* block = static_cast<int*>(std::malloc(values.size() * sizeof(int)));
        std::copy(values.begin(), values.end(), block);
        return block;
    };
    MeshAdjVertices neighbours(3, 2, allocated({0, 3, 4}), allocated({2, 2, 7, 0, 1, 0})), empty;
    empty.swap(neighbours);
    EXPECT_EQ(neighbours.numVertices, 0);
    EXPECT_TRUE(empty.numNeighbours(0) == 2 && empty.numNeighbours(1) == 0 && empty.neighbours(2)[0] == 0);

    int vertices[2] = {5, 6}, chosen[3] = {7, 8, 9};
    const MeshSubset subset(2, vertices, 3, chosen), none(0, nullptr, 0, nullptr);
    vertices[0] = chosen[2] = -1;
    EXPECT_TRUE(subset.numVertices == 2 && subset.vertices[0] == 5);
    EXPECT_TRUE(subset.numTriangles == 3 && subset.triangles[2] == 9);
    EXPECT_EQ(none.numVertices + none.numTriangles, 0);
}

} // namespace
