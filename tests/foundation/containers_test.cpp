#include "znGeom/foundation/containers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <list>
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

TEST(ZnVector, FollowsAStandardVectorThroughRandomOperations)
{
    Random random(1);
    zn::vector<std::string> v, other;
    std::vector<std::string> model, otherModel;
    std::string value;
    int at = 0, some = 0;
    const std::function<void()> operations[] = {
        [&] { v.append(value), model.push_back(value); },
        [&] { *v.appendAndReturnPtr() += value, model.push_back(value); },
        [&] { model.insert(model.begin() + at, *v.insert(v.begin() + at, value)); },
        [&] {
            v.erase(v.begin() + at, v.begin() + at + some), model.erase(model.begin() + at, model.begin() + at + some);
        },
        [&] { v.setSize(at), model.resize(size_t(at)); },
        [&] { v.setSize(at + 5, value), model.resize(size_t(at) + 5, value); },
        [&] {
            v.append(v), model.resize(2 * model.size()),
                std::copy_n(model.begin(), model.size() / 2, model.end() - int(model.size() / 2));
        },
        [&] { v.append(other), model.insert(model.end(), otherModel.begin(), otherModel.end()); },
        [&] { v.swap(other), model.swap(otherModel); },
        [&] { other.copy(v), otherModel = model; },
        [&] { v.reserve(2 * at), std::reverse(v.begin(), v.end()), std::reverse(model.begin(), model.end()); },
        [&] {
            if (v.empty()) return;
            v.append(v[random.below(v.size())]), model.push_back(v.back()); // an element of its own
            v.insert(v.begin(), v.back()), model.insert(model.begin(), v.back());
            v.eraseBack(), model.pop_back();
            EXPECT_EQ(v.erase(v.begin() + at) - v.begin(), model.erase(model.begin() + at) - model.begin());
        }};
    for (int step = 0; step < 20000; ++step) {
        if (v.size() > 200) v.clear(), model.clear();
        at = random.below(v.size() + 1), some = random.below(v.size() - at + 1), value = text(random.below(100));
        operations[random.below(int(std::size(operations)))]();
        ASSERT_TRUE(contents(v) == model && v.size() == int(model.size()) && v.capacity() >= v.size());
    }
}

TEST(ZnVector, HoldsBoolsThatHaveAddresses)
{
    zn::vector<bool> flags(3, true);
    bool* second = &flags[1];
    *second = false;
    flags.append(true);
    flags.insert(flags.begin(), false);
    EXPECT_FALSE(*flags.appendAndReturnPtr());
    flags.eraseBack();
    EXPECT_EQ(flags, (zn::vector<bool>{false, true, false, true, true}));
    const bool raw[5] = {false, true, false, true, true};
    EXPECT_EQ(std::memcmp(flags.data(), raw, 5), 0);
}

TEST(ZnVector, GrowsRarelyWhenShortVectorsAreAppended)
{
    zn::vector<int> all;
    const zn::vector<int> piece(1, 7);
    int growths = 0;
    for (int i = 0, before = 0; i < 10000; ++i, before = all.capacity()) {
        all.append(piece);
        growths += all.capacity() != before;
    }
    EXPECT_LT(growths, 100);
}

TEST(ZnList, FollowsAStandardListThroughRandomOperations)
{
    Random random(2);
    zn::list<std::string> l, other;
    std::list<std::string> model, otherModel;
    const auto byLength = [](const std::string& a, const std::string& b) { return a.size() < b.size(); };
    std::string value;
    zn::list<std::string>::Node node;
    std::list<std::string>::iterator place;
    const std::function<void()> operations[] = {
        [&] { l.append(value), model.push_back(value); },
        [&] { l.prepend(value), model.push_front(value); },
        [&] { model.insert(place, l.insert(node, value).value()); },
        [&] { l.splice(node, other), model.splice(place, otherModel); },
        [&] { l.reverse(), model.reverse(); },
        [&] { l.sort(byLength), model.sort(byLength); }, // keeps the order of equals
        [&] { l.swap(other), model.swap(otherModel); },
        [&] { other.copy(l), otherModel = model; },
        [&] {
            if (!node) return;
            EXPECT_EQ(l.erase(node) == l.sentinel(), model.erase(place) == model.end());
            if (!l.empty()) l.eraseFront(), model.pop_front();
        }};
    for (int step = 0; step < 5000; ++step) {
        if (l.size() > 100) l.clear(), model.clear();
        const int at = random.below(l.size() + 1);
        node = l.firstNode(), place = std::next(model.begin(), at), value = text(random.below(1000));
        for (int i = 0; i < at; ++i) node = node.next();
        operations[random.below(int(std::size(operations)))]();
        ASSERT_TRUE(contents(l) == contents(model) && l.size() == int(model.size()));
        auto back = l.sentinel();
        for (auto expected = model.rbegin(); expected != model.rend(); ++expected)
            ASSERT_EQ((back = back.prev()).value(), *expected);
    }
}

TEST(ZnList, ElementsNeverMove)
{
    zn::list<int> a, b;
    a.append(1);
    const int* element = &b.append(2).value();
    b.prepend(3);
    a.splice(a.firstNode(), b);
    a.sort();
    EXPECT_EQ(contents(a), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(&a.firstNode().next().value(), element);
}

TEST(ZnTree, KeepsEqualKeysInTheOrderOfInsertion)
{
    Random random(3);
    zn::multimap<int, std::string> tree;
    std::vector<std::pair<int, std::string>> model;
    const auto below = [](const auto& a, const auto& b) { return a.first < b.first; };
    for (int step = 0; step < 5000; ++step) {
        const std::pair<int, std::string> entry(random.below(20), text(step));
        const auto [first, last] = std::equal_range(model.begin(), model.end(), entry, below);
        if (random.oneIn(15)) {
            EXPECT_EQ(tree.eraseNodesMatching(entry.first), last - first);
            model.erase(first, last);
        } else if (random.oneIn(2) && first != last) {
            EXPECT_EQ(tree.findNode(entry.first).value().second, first->second);
            EXPECT_EQ(bool(tree.eraseNode(tree.findNode(entry.first))), first + 1 != model.end());
            model.erase(first);
        } else {
            EXPECT_EQ(tree.insertNodeNonUnique(entry.first, entry.second).value().second, entry.second);
            model.insert(last, entry);
        }
        const auto [begin, end] = tree.equalRange(entry.first);
        int run = 0;
        for (auto node = begin; !(node == end); node = node.next()) ++run;
        ASSERT_EQ(run, std::count_if(model.begin(), model.end(), [&](auto& m) { return m.first == entry.first; }));
        ASSERT_TRUE(std::equal(tree.begin(), tree.end(), model.begin(), model.end(),
                               [](auto& a, auto& b) { return a.first == b.first && a.second == b.second; }));
    }
}

struct PoorHash
{
    size_t operator()(int key) const { return size_t(key % 7); }
};

TEST(ZnHash, FollowsAStandardTableThroughRandomOperations)
{
    Random random(4);
    zn::unordered_map<int, std::string, PoorHash> table;
    zn::unordered_set<int, PoorHash> keys;
    std::unordered_map<int, std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const int key = random.below(200);
        const bool present = model.count(key) != 0;
        ASSERT_EQ(bool(table.findNode(PoorHash()(key), key)), present);
        ASSERT_EQ(keys.get(key) != nullptr, present);
        if (random.oneIn(3)) {
            ASSERT_EQ(table.erase(key), present);
            ASSERT_EQ(keys.erase(key), present);
            model.erase(key);
        } else {
            table.rehash(table.size() + 1);
            const auto [node, isNew] = table.insert_unique_noresize(PoorHash()(key), key, text(step));
            ASSERT_TRUE(isNew != present && node == table.findNode(key) && node.value().first == key);
            ASSERT_EQ(node == table.firstNode(), table.firstNode().value().first == key);
            ASSERT_EQ(keys.insert(key), !present);
            model.emplace(key, text(step));
            ASSERT_EQ(*table.get(key), model.at(key)); // what was there stays
        }
        int walked = 0;
        for (auto node = table.firstNode(); node; node = table.nextItem(node), ++walked)
            ASSERT_EQ(node.value().second, model.at(node.value().first));
        ASSERT_EQ(walked, int(model.size()));
        ASSERT_EQ(keys.size(), walked);
    }
}

template <typename Container>
void fill(Container& c, int begin, int count)
{
    for (int i = begin; i < begin + count; ++i) {
        if constexpr (requires { c.append(i); })
            c.append(i);
        else if constexpr (requires { c.insert(i); })
            c.insert(i);
        else if constexpr (requires { c.insertNodeNonUnique(i); })
            c.insertNodeNonUnique(i);
        else
            c[i] = i;
    }
}

template <typename Container>
class Ownership : public testing::Test
{};
using AllContainers = testing::Types<zn::vector<int>, zn::list<int>, zn::set<int>, zn::multiset<int>, zn::map<int, int>,
                                     zn::unordered_set<int>, zn::unordered_map<int, int>>;
TYPED_TEST_SUITE(Ownership, AllContainers);

TYPED_TEST(Ownership, CopiesMovesAndSwapsKeepApart)
{
    TypeParam a;
    {
        TypeParam b, c;
        fill(a, 0, 25);
        fill(b, 100, 40);
        a.swap(b);
        c = a; // its nodes belong to itself
        TypeParam moved = std::move(b);
        b.clear();
        fill(b, 0, 3);
        EXPECT_EQ(b.size(), 3);
        EXPECT_EQ(moved.size(), 25);
        a = std::move(moved);
        fill(moved, 500, 11);
        moved.swap(b);
        a.swap(a);
        fill(a, 1000, 15);
        EXPECT_EQ(c.size(), 40);
        fill(c, 2000, 1);
    }
    EXPECT_EQ(a.size(), 40);
    fill(a, 3000, 10);
    EXPECT_EQ(a.size(), 50);
}

TYPED_TEST(Ownership, WhatWasMovedFromIsNobodyElsesBusiness)
{
    constexpr int many = 20000;
    TypeParam a, b;
    fill(a, -1, 1);
    b = std::move(a);
    a.clear();
    std::thread worker([&a] { fill(a, 0, many); });
    fill(b, 0, many);
    worker.join();
    EXPECT_EQ(a.size(), many);
    EXPECT_EQ(b.size(), many + 1);
}

struct alignas(64) CacheLine
{
    int value;
    friend bool operator<(const CacheLine& a, const CacheLine& b) { return a.value < b.value; }
};

TEST(BlockAllocator, GivesElementsTheirAlignment)
{
    zn::set<CacheLine> lines;
    for (int i = 0; i < 30; ++i) {
        const auto node = lines.insertNodeUnique(CacheLine{i}).first;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&node.value()) % 64, 0u);
    }
}

struct Shared : zn::ReferenceCount
{
    explicit Shared(int* alive) : m_alive(alive) { ++*m_alive; }
    Shared(const Shared& other) : zn::ReferenceCount(other), m_alive(other.m_alive) { ++*m_alive; }
    Shared& operator=(const Shared&) = default;
    ~Shared() override { --*m_alive; }
    int* m_alive;
    zn::Reference<Shared> next;
};

TEST(Reference, TheLastOneDestroysTheObject)
{
    int alive = 0;
    {
        zn::Reference<Shared> a = new Shared(&alive);
        zn::Reference<Shared> b = a;
        EXPECT_EQ(a->getCount(), 2);
        const zn::Reference<Shared> copied = new Shared(*a);
        EXPECT_EQ(copied->getCount(), 1);
        *copied = *a; // the count is no content
        EXPECT_EQ(copied->getCount(), 1);
        b = std::move(a);
        EXPECT_TRUE(!a && b->getCount() == 1);
        b = b.get();
        EXPECT_TRUE(b == b.get() && !(b == copied) && !(b == copied.get()) && a == nullptr);
        const zn::Reference<Shared>& alias = b;
        b = alias;
        EXPECT_EQ(alive, 2);
        b = nullptr;
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Reference, TheNewTargetIsCountedBeforeTheOldOneGoes)
{
    int alive = 0;
    for (const bool moving : {false, true}) {
        // A chain of which only the head is owned from outside: the next one lives by the one that goes.
        zn::Reference<Shared> head = new Shared(&alive);
        head->next = new Shared(&alive);
        head->next->next = new Shared(&alive);
        if (moving)
            head = std::move(head->next);
        else
            head = head->next;
        EXPECT_EQ(alive, 2);
        EXPECT_EQ(head->getCount(), 1);
        head = head->next.get();
        EXPECT_EQ(alive, 1);
        head = nullptr;
        EXPECT_EQ(alive, 0);
    }
}

} // namespace
