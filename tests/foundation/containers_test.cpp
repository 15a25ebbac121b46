#include "znGeom/foundation/containers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>
#include <unordered_map>

#include "tests/support/random.h"

namespace {

using znTest::Random;

/// Long enough to live on the heap, so that the sanitizers see every slip.
std::string text(int number) { return "a text that is longer than a pointer, number " + std::to_string(number); }

/// Any of the containers as a sequence.
template <typename Container>
auto contents(const Container& container)
{
    return std::vector<std::decay_t<decltype(*container.begin())>>(container.begin(), container.end());
}

TEST(ZnVector, InsertsErasesAndTakesItselfAsAnArgument)
{
    zn::vector<std::string> v = {text(1), text(2)}, other;
    v.append(v);
    EXPECT_EQ(contents(v), (std::vector<std::string>{text(1), text(2), text(1), text(2)}));
    for (int i = 0; i < 20; ++i) v.append(v[1]), v.insert(v.begin(), v[v.size() - 3]); // elements of its own
    EXPECT_TRUE(v.size() == 44 && v.back() == text(2));
    *v.appendAndReturnPtr() += text(3);
    other.copy(v);
    EXPECT_EQ(*v.insert(v.begin() + 7, text(4)), text(4));
    EXPECT_EQ(*v.erase(v.begin() + 7), other[7]);
    EXPECT_EQ(v, other);
    EXPECT_EQ(v.erase(v.begin() + 1, v.end() - 1), v.begin() + 1);
    v.setSize(3, text(5));
    EXPECT_EQ(contents(v), (std::vector<std::string>{other[0], text(3), text(5)}));
}

TEST(ZnVector, HoldsBoolsThatHaveAddresses)
{
    zn::vector<bool> flags(3, true);
    *(&flags[1]) = false;
    EXPECT_FALSE(*flags.appendAndReturnPtr());
    const bool raw[4] = {true, false, true, false};
    EXPECT_EQ(std::memcmp(flags.data(), raw, 4), 0);
}

TEST(ZnList, WalksSplicesAndSortsAroundASentinel)
{
    zn::list<int> a, b;
    a.append(7);
    a.insert(a.prepend(31), 12);
    const auto kept = b.append(32);
    b.insert(b.sentinel(), 5);
    a.splice(a.sentinel().prev(), b);
    EXPECT_EQ(contents(a), (std::vector<int>{12, 31, 32, 5, 7}));
    EXPECT_TRUE(b.empty() && kept.prev().value() == 31 && !a.sentinel().prev().next());
    const int* element = &kept.value();
    a.sort([](int x, int y) { return x / 10 < y / 10; }); // keeps the order of equals
    a.reverse();
    EXPECT_EQ(contents(a), (std::vector<int>{32, 31, 12, 7, 5}));
    EXPECT_EQ(&a.firstNode().value(), element); // elements never move
    EXPECT_EQ(a.erase(a.firstNode()).value(), 31);
}

TEST(ZnTree, KeepsEqualKeysInTheOrderOfInsertion)
{
    zn::multimap<int, std::string> tree;
    for (int i = 0; i < 100; ++i) tree.insertNodeNonUnique(i * 7 % 5, text(i));
    EXPECT_TRUE(tree.eraseNode(tree.findNode(3))); // the first of them, that of 4
    EXPECT_EQ(tree.eraseNodesMatching(2), 20);
    auto [node, end] = tree.equalRange(3);
    for (int i = 9; i < 100; i += 5, node = node.next()) EXPECT_EQ(node.value().second, text(i));
    EXPECT_TRUE(node == end && tree.size() == 79 && !tree.findNode(2));
}

struct PoorHash
{
    size_t operator()(int key) const { return size_t(key % 7); }
};

TEST(ZnHash, FollowsAStandardTableThroughRandomOperations)
{
    Random random(4);
    zn::unordered_map<int, std::string, PoorHash> table;
    std::unordered_map<int, std::string> model;
    for (int step = 0; step < 2000; ++step) {
        const int key = random.below(200);
        const bool present = model.count(key) != 0;
        if (random.oneIn(3)) {
            ASSERT_EQ(table.erase(key), present);
            model.erase(key);
        } else {
            table.rehash(table.size() + 1);
            const auto [node, isNew] = table.insert_unique_noresize(PoorHash()(key), key, text(step));
            ASSERT_TRUE(isNew != present && node == table.findNode(PoorHash()(key), key));
            model.emplace(key, text(step)); // what was there stays
        }
        int walked = 0;
        for (auto node = table.firstNode(); node; node = table.nextItem(node), ++walked)
            ASSERT_EQ(node.value().second, model.at(node.value().first));
        ASSERT_EQ(walked, int(model.size()));
    }
}

template <typename Container>
void fill(Container& c, int begin, int count)
{
    for (int i = begin; i < begin + count; ++i) {
        if constexpr (requires { c.insert(i); })
            c.insert(i);
        else
            c[i] = i;
    }
}

template <typename Container>
class Ownership : public testing::Test
{};
using NodeContainers =
    testing::Types<zn::set<int>, zn::map<int, int>, zn::unordered_set<int>, zn::unordered_map<int, int>>;
TYPED_TEST_SUITE(Ownership, NodeContainers);

TYPED_TEST(Ownership, CopiesMovesAndSwapsKeepApart)
{
    TypeParam a;
    {
        TypeParam b, c;
        fill(a, 0, 25), fill(b, 100, 40);
        a.swap(b);
        c = a; // its nodes belong to itself
        TypeParam moved = std::move(b);
        b.clear();
        fill(b, 0, 3);
        EXPECT_TRUE(b.size() == 3 && moved.size() == 25);
        a = std::move(moved);
        fill(moved, 500, 11);
        moved.swap(b);
        a.swap(a);
        fill(a, 1000, 15);
        EXPECT_EQ(c.size(), 40);
    }
    // What was moved from is nobody else's business: two threads go on with the two.
    constexpr int many = 20000;
    TypeParam b = std::move(a);
    a.clear();
    std::thread worker([&a] { fill(a, 0, many); });
    fill(b, 2000, many);
    worker.join();
    EXPECT_TRUE(a.size() == many && b.size() == many + 40);
}

struct alignas(64) CacheLine
{
    int value;
    friend bool operator<(const CacheLine& a, const CacheLine& b) { return a.value < b.value; }
};

TEST(BlockAllocator, GivesElementsTheirAlignment)
{
    zn::set<CacheLine> lines;
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&lines.insertNodeUnique({i}).first.value()) % 64, 0u);
}

struct Shared : zn::ReferenceCount
{
    Shared() { ++alive; }
    Shared(const Shared& other) : zn::ReferenceCount(other) { ++alive; }
    Shared& operator=(const Shared&) = default;
    ~Shared() override { --alive; }
    static inline int alive = 0;
    zn::Reference<Shared> next;
};

TEST(Reference, TheLastOneDestroysTheObject)
{
    {
        zn::Reference<Shared> a = new Shared, b = a;
        EXPECT_EQ(a->getCount(), 2);
        const zn::Reference<Shared> copied = new Shared(*a);
        *copied = *a; // the count is no content
        EXPECT_EQ(copied->getCount(), 1);
        b = std::move(a);
        EXPECT_TRUE(!a && b->getCount() == 1);
        b = b.get();
        const zn::Reference<Shared>& alias = b;
        b = alias;
        EXPECT_EQ(Shared::alive, 2);
        b = nullptr;
        EXPECT_EQ(Shared::alive, 1);
    }
    for (int way = 0; way < 3; ++way) {
        // Only the head is owned from outside: the new target lives by the one that goes, so it is counted first.
        zn::Reference<Shared> head = new Shared;
        head->next = new Shared;
        if (way == 0) head = std::move(head->next);
        if (way == 1) head = head->next;
        if (way == 2) head = head->next.get();
        EXPECT_TRUE(Shared::alive == 1 && head->getCount() == 1);
    }
    EXPECT_EQ(Shared::alive, 0);
}

struct CountedImpl : zn::ImplBase
{
    CountedImpl() { ++alive; }
    ~CountedImpl() override { --alive; }
    static inline int alive = 0;
};

TEST(ImplPointer, OneOwnsAndCopiesShare)
{
    using Pointer = zn::ImplPointer<CountedImpl>;
    {
        Pointer owner(new CountedImpl);
        CountedImpl* const impl = owner.operator->();
        const auto isAt = [impl](const Pointer& pointer) { return pointer && pointer.operator->() == impl; };
        {
            const Pointer copy(owner), copyOfCopy(copy);
            EXPECT_TRUE(isAt(copy) && isAt(copyOfCopy));
        }
        Pointer moved(std::move(owner)), assigned;
        EXPECT_TRUE(isAt(owner) && isAt(moved)) << "the source goes on sharing";
        EXPECT_FALSE(assigned);
        assigned = std::move(moved);
        EXPECT_TRUE(isAt(assigned));
        Pointer& alias = assigned;
        assigned = std::move(alias);
        EXPECT_EQ(CountedImpl::alive, 1);
        owner = Pointer(new CountedImpl); // what it only shared lives on
        EXPECT_EQ(CountedImpl::alive, 2);
        assigned = std::move(owner);
        EXPECT_EQ(CountedImpl::alive, 1);
    }
    EXPECT_EQ(CountedImpl::alive, 0);
}

TEST(DisjointSets, AreKnownByTheirLowestMembers)
{
    Random random(7);
    for (int round = 0; round < 50; ++round) {
        const int size = 1 + random.below(200);
        zn::DisjointSets sets(size);
        std::vector<int> lowest(static_cast<size_t>(size)); // the plain way: a name for each
        for (int i = 0; i < size; ++i) lowest[size_t(i)] = i;
        for (int step = random.below(2 * size); step > 0; --step) {
            const int a = random.below(size), b = random.below(size);
            const auto [low, high] = std::minmax({lowest[size_t(a)], lowest[size_t(b)]});
            EXPECT_EQ(sets.unite(a, b), low);
            std::replace(lowest.begin(), lowest.end(), int(high), int(low));
        }
        for (int i = 0; i < size; ++i) {
            const int lower = sets.lower(i);
            ASSERT_TRUE(lowest[size_t(lower)] == lowest[size_t(i)] && (lower < i || lowest[size_t(i)] == i));
            ASSERT_EQ(sets.find(i), lowest[size_t(i)]);
        }
    }
}

} // namespace
