/// `zn::unordered_set` and `zn::unordered_map`: chained hash tables whose callers may supply the hash.
#pragma once

#include <functional>
#include <unordered_set>
#include <utility>

#include "znGeom/foundation/containers/block_allocator.h"

namespace zn {

/// What both tables share, over a standard table of entries that keep their hash. The order of iteration is the table's
/// own: the same in every run for the same hashes and operations, but otherwise meaningless.
template <typename Key, typename Item, typename KeyOf, typename Hash, typename Equal>
class HashTable
{
    struct Entry
    {
        size_t hash;
        mutable Item item; // the key within it is never exposed for writing
    };
    struct Probe
    {
        size_t hash;
        const Key* key;
    };
    struct EntryHash
    {
        using is_transparent = void;
        size_t operator()(const Entry& e) const { return e.hash; }
        size_t operator()(const Probe& p) const { return p.hash; }
    };
    struct EntryEqual
    {
        using is_transparent = void;
        bool operator()(const Entry& a, const Entry& b) const { return Equal()(KeyOf()(a.item), KeyOf()(b.item)); }
        bool operator()(const Probe& a, const Entry& b) const { return Equal()(*a.key, KeyOf()(b.item)); }
        bool operator()(const Entry& a, const Probe& b) const { return Equal()(KeyOf()(a.item), *b.key); }
    };
    using Storage = std::unordered_set<Entry, EntryHash, EntryEqual, NodeAllocator<Entry>>;

public:
    /// One place in the table; false when it names none.
    class Node
    {
    public:
        Node() = default;
        auto& value() const { return KeyOf::visible(m_at->item); }
        explicit operator bool() const { return m_table && m_at != m_table->end(); }
        friend bool operator==(const Node& a, const Node& b) { return a.m_table == b.m_table && a.m_at == b.m_at; }

    private:
        friend class HashTable;
        Node(const Storage* owner, typename Storage::const_iterator at) : m_table(owner), m_at(at) {}
        const Storage* m_table = nullptr;
        typename Storage::const_iterator m_at;
    };

    HashTable() = default;
    HashTable(const HashTable&) = default;
    HashTable& operator=(const HashTable&) = default;
    // By swapping: the moved-from table gets blocks of its own, so that two threads may go on to use one each.
    HashTable(HashTable&& other) { swap(other); }
    HashTable& operator=(HashTable&& other)
    {
        HashTable moved(std::move(other));
        swap(moved);
        return *this;
    }

    static size_t hashOf(const Key& key) { return Hash()(key); }

    int size() const { return static_cast<int>(m_table.size()); }
    bool empty() const { return m_table.empty(); }

    /// `hash` must be what `Hash` gives for the key.
    Node findNode(size_t hash, const Key& key) const { return {&m_table, m_table.find(Probe{hash, &key})}; }
    Node findNode(const Key& key) const { return findNode(hashOf(key), key); }
    bool contains(const Key& key) const { return static_cast<bool>(findNode(key)); }

    /// Makes room for that many elements, so that inserting up to that number does not move the table.
    void rehash(int expectedSize) { m_table.reserve(static_cast<size_t>(expectedSize)); }

    /// A walk over all elements: `for (auto n = table.firstNode(); n; n = table.nextItem(n))`.
    Node firstNode() const { return {&m_table, m_table.begin()}; }
    Node nextItem(Node node) const { return {&m_table, std::next(node.m_at)}; }

    /// False when the key was not there.
    bool erase(const Key& key)
    {
        const auto at = m_table.find(Probe{hashOf(key), &key});
        if (at == m_table.end()) return false;
        m_table.erase(at);
        return true;
    }

    void clear() { m_table.clear(); }
    void copy(const HashTable& other) { *this = other; }
    void swap(HashTable& other) { m_table.swap(other.m_table); }

protected:
    std::pair<Node, bool> insertItem(size_t hash, Item item)
    {
        const auto [at, isNew] = m_table.insert(Entry{hash, std::move(item)});
        return {Node(&m_table, at), isNew};
    }

private:
    Storage m_table;
};

template <typename T>
struct SetKeyOf
{
    const T& operator()(const T& item) const { return item; }
    static const T& visible(const T& item) { return item; }
};

template <typename K, typename V>
struct MapKeyOf
{
    const K& operator()(const std::pair<const K, V>& item) const { return item.first; }
    static std::pair<const K, V>& visible(std::pair<const K, V>& item) { return item; }
};

/// A hash set.
template <typename T, typename Hash = std::hash<T>, typename Equal = std::equal_to<T>>
class unordered_set : public HashTable<T, T, SetKeyOf<T>, Hash, Equal>
{
    using Base = HashTable<T, T, SetKeyOf<T>, Hash, Equal>;

public:
    /// Inserts unless the key is there, after a `rehash` that made room; returns its node and whether it is new.
    std::pair<typename Base::Node, bool> insert_unique_noresize(size_t hash, const T& value)
    {
        return this->insertItem(hash, value);
    }
    bool insert(const T& value) { return this->insertItem(this->hashOf(value), value).second; }
    /// The stored element; null when it is not there.
    const T* get(const T& key) const
    {
        const auto node = this->findNode(key);
        return node ? &node.value() : nullptr;
    }
};

/// A hash map.
template <typename K, typename V, typename Hash = std::hash<K>, typename Equal = std::equal_to<K>>
class unordered_map : public HashTable<K, std::pair<const K, V>, MapKeyOf<K, V>, Hash, Equal>
{
    using Base = HashTable<K, std::pair<const K, V>, MapKeyOf<K, V>, Hash, Equal>;

public:
    /// Inserts unless the key is there, after a `rehash` that made room; returns its node and whether it is new.
    std::pair<typename Base::Node, bool> insert_unique_noresize(size_t hash, const K& key, const V& value)
    {
        return this->insertItem(hash, {key, value});
    }
    /// The value of a key; null when it is not there.
    V* get(const K& key) const
    {
        const auto node = this->findNode(key);
        return node ? &node.value().second : nullptr;
    }
    V& operator[](const K& key) { return this->insertItem(this->hashOf(key), {key, V()}).first.value().second; }
};

} // namespace zn
