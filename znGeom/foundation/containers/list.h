/// `zn::list`: a doubly linked list whose elements never move.
#pragma once

#include <list>
#include <utility>

#include "znGeom/foundation/machine/language.h"

namespace zn {

/// A face over `std::list`, circular around a sentinel. A `Node` names one place: `next()` and `prev()` walk, `value()`
/// reads the element, and the sentinel, reached after the last element, converts to false.
template <typename T>
class list
{
    using Storage = std::list<T>;

public:
    using iterator = typename Storage::iterator;
    using const_iterator = typename Storage::const_iterator;

    class Node
    {
    public:
        Node() = default;
        Node next() const { return {m_list, std::next(m_at)}; }
        Node prev() const { return {m_list, std::prev(m_at)}; }
        T& value() const { return *m_at; }
        explicit operator bool() const { return m_list && m_at != m_list->end(); }
        friend bool operator==(const Node& a, const Node& b) { return a.m_list == b.m_list && a.m_at == b.m_at; }

    private:
        friend class list;
        Node(Storage* owner, iterator at) : m_list(owner), m_at(at) {}
        Storage* m_list = nullptr;
        iterator m_at;
    };

    int size() const { return static_cast<int>(m_list.size()); }
    bool empty() const { return m_list.empty(); }
    iterator begin() { return m_list.begin(); }
    iterator end() { return m_list.end(); }
    const_iterator begin() const { return m_list.begin(); }
    const_iterator end() const { return m_list.end(); }
    T& front() { return m_list.front(); }
    const T& front() const { return m_list.front(); }
    T& back() { return m_list.back(); }
    const T& back() const { return m_list.back(); }

    /// The first element's node; the sentinel when there is none.
    Node firstNode() { return {&m_list, m_list.begin()}; }
    Node sentinel() { return {&m_list, m_list.end()}; }

    Node append(const T& value) { return insert(sentinel(), value); }
    Node append(T&& value) { return {&m_list, m_list.insert(m_list.end(), std::move(value))}; }
    Node prepend(const T& value) { return insert(firstNode(), value); }
    /// Inserts before `position`; before the sentinel appends.
    Node insert(Node position, const T& value) { return {&m_list, m_list.insert(position.m_at, value)}; }
    /// Returns the node after the removed one.
    Node erase(Node position) { return {&m_list, m_list.erase(position.m_at)}; }
    void eraseFront() { m_list.pop_front(); }

    /// Moves all nodes of `other` in front of `position`, in their order; `other` is then empty.
    void splice(Node position, list& other)
    {
        if (this != &other) m_list.splice(position.m_at, other.m_list);
    }

    void reverse() { m_list.reverse(); }
    /// Sorts, keeping the order of equal elements.
    void sort() { m_list.sort(); }
    template <typename Less>
    void sort(Less less)
    {
        m_list.sort(less);
    }

    void swap(list& other) { m_list.swap(other.m_list); }
    void clear() { m_list.clear(); }
    void copy(const list& other) { *this = other; }

private:
    Storage m_list;
};

} // namespace zn
