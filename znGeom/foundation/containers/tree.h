/// `zn::set`, `zn::map` and their multi forms: balanced trees with in-order iteration.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <utility>

#include "znGeom/foundation/containers/block_allocator.h"

namespace zn {

/// What the four trees share, over a standard tree `Storage`. A `Node` names one place: `next()` steps in order,
/// `value()` reads (for maps a pair of key and value), and the place after the last converts to false. Equal keys of
/// the multi forms stay in the order of insertion.
template <typename Storage>
class Tree
{
public:
    using Key = typename Storage::key_type;
    using Value = typename Storage::value_type;
    using iterator = typename Storage::iterator;
    using const_iterator = typename Storage::const_iterator;

    class Node
    {
    public:
        Node() = default;
        Node next() const { return {m_tree, std::next(m_at)}; }
        auto& value() const { return *m_at; }
        explicit operator bool() const { return m_tree && m_at != const_cast<Storage*>(m_tree)->end(); }
        friend bool operator==(const Node& a, const Node& b) { return a.m_tree == b.m_tree && a.m_at == b.m_at; }

    private:
        friend class Tree;
        Node(const Storage* owner, iterator at) : m_tree(owner), m_at(at) {}
        const Storage* m_tree = nullptr;
        iterator m_at;
    };

    /// The run of equal keys [first, last).
    struct NodeRange
    {
        Node first, last;
    };

    Tree() = default;
    Tree(const Tree&) = default;
    Tree& operator=(const Tree&) = default;
    // By swapping: the moved-from tree gets blocks of its own, so that two threads may go on to use one each.
    Tree(Tree&& other) { swap(other); }
    Tree& operator=(Tree&& other)
    {
        Tree moved(std::move(other));
        swap(moved);
        return *this;
    }

    int size() const { return static_cast<int>(m_tree.size()); }
    bool empty() const { return m_tree.empty(); }
    iterator begin() { return m_tree.begin(); }
    iterator end() { return m_tree.end(); }
    const_iterator begin() const { return m_tree.begin(); }
    const_iterator end() const { return m_tree.end(); }

    Node firstNode() { return {&m_tree, m_tree.begin()}; }
    /// The first element with this key; a false node when there is none.
    Node findNode(const Key& key) { return {&m_tree, m_tree.find(key)}; }
    const_iterator find(const Key& key) const { return m_tree.find(key); }
    bool contains(const Key& key) const { return m_tree.find(key) != m_tree.end(); }

    NodeRange equalRange(const Key& key)
    {
        const auto run = m_tree.equal_range(key);
        return {{&m_tree, run.first}, {&m_tree, run.second}};
    }

    /// Returns the node after the removed one.
    Node eraseNode(Node node) { return {&m_tree, m_tree.erase(node.m_at)}; }
    /// Removes every element with this key; returns how many there were.
    int eraseNodesMatching(const Key& key) { return static_cast<int>(m_tree.erase(key)); }

    void clear() { m_tree.clear(); }
    void copy(const Tree& other) { *this = other; }
    void swap(Tree& other) { m_tree.swap(other.m_tree); }

protected:
    Node nodeAt(iterator at) { return {&m_tree, at}; }
    Storage m_tree;
};

/// A sorted set of distinct keys.
template <typename T, typename Less = std::less<T>>
class set : public Tree<std::set<T, Less, NodeAllocator<T>>>
{
    using Base = Tree<std::set<T, Less, NodeAllocator<T>>>;

public:
    /// Inserts unless the key is there; returns its node and whether it is new.
    std::pair<typename Base::Node, bool> insertNodeUnique(const T& key)
    {
        const auto [at, isNew] = this->m_tree.insert(key);
        return {this->nodeAt(at), isNew};
    }
    bool insert(const T& key) { return insertNodeUnique(key).second; }
};

/// A sorted set that keeps equal keys.
template <typename T, typename Less = std::less<T>>
class multiset : public Tree<std::multiset<T, Less, NodeAllocator<T>>>
{
    using Base = Tree<std::multiset<T, Less, NodeAllocator<T>>>;

public:
    typename Base::Node insertNodeNonUnique(const T& key) { return this->nodeAt(this->m_tree.insert(key)); }
};

/// A sorted map with distinct keys.
template <typename K, typename V, typename Less = std::less<K>>
class map : public Tree<std::map<K, V, Less, NodeAllocator<std::pair<const K, V>>>>
{
    using Base = Tree<std::map<K, V, Less, NodeAllocator<std::pair<const K, V>>>>;

public:
    /// Inserts unless the key is there; returns its node and whether it is new.
    std::pair<typename Base::Node, bool> insertNodeUnique(const K& key, const V& value)
    {
        const auto [at, isNew] = this->m_tree.emplace(key, value);
        return {this->nodeAt(at), isNew};
    }
    /// The value of a key, inserted value-initialised if it is not there.
    V* getValuePtr(const K& key) { return &this->m_tree[key]; }
    V& operator[](const K& key) { return this->m_tree[key]; }
};

/// A sorted map that keeps equal keys.
template <typename K, typename V, typename Less = std::less<K>>
class multimap : public Tree<std::multimap<K, V, Less, NodeAllocator<std::pair<const K, V>>>>
{
    using Base = Tree<std::multimap<K, V, Less, NodeAllocator<std::pair<const K, V>>>>;

public:
    typename Base::Node insertNodeNonUnique(const K& key, const V& value)
    {
        return this->nodeAt(this->m_tree.emplace(key, value));
    }
};

} // namespace zn
