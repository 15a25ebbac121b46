/// `zn::vector`: a contiguous array that owns its elements.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

#include "znGeom/foundation/machine/language.h"

namespace zn {

/// A face over `std::vector` with `int` sizes. Elements are always addressable: a `zn::vector<bool>` holds real bools,
/// and `bool*` into it works. Iterators are pointers; they stay valid while the vector does not grow. Indices and
/// positions are trusted. Copies are deep.
template <typename T>
class vector
{
    // std::vector<bool> packs bits, which have no address; a box of the same size and layout keeps them apart.
    struct BoolBox
    {
        bool value = false;
        BoolBox() = default;
        BoolBox(bool v) : value(v) {}
    };
    using Slot = std::conditional_t<std::is_same_v<T, bool>, BoolBox, T>;
    static_assert(sizeof(Slot) == sizeof(T));

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    vector() = default;
    explicit vector(int size) : m_slots(static_cast<size_t>(size)) {}
    vector(int size, const T& value) : m_slots(static_cast<size_t>(size), Slot(value)) {}
    vector(std::initializer_list<T> values) : m_slots(values.begin(), values.end()) {}
    vector(const T* first, const T* last) : m_slots(first, last) {}

    int size() const { return static_cast<int>(m_slots.size()); }
    int capacity() const { return static_cast<int>(m_slots.capacity()); }
    bool empty() const { return m_slots.empty(); }

    T* data() { return reinterpret_cast<T*>(m_slots.data()); }
    const T* data() const { return reinterpret_cast<const T*>(m_slots.data()); }
    T* begin() { return data(); }
    T* end() { return data() + size(); }
    const T* begin() const { return data(); }
    const T* end() const { return data() + size(); }

    T& operator[](int index) { return data()[index]; }
    const T& operator[](int index) const { return data()[index]; }
    T& front() { return data()[0]; }
    const T& front() const { return data()[0]; }
    T& back() { return data()[size() - 1]; }
    const T& back() const { return data()[size() - 1]; }

    void append(const T& value) { m_slots.push_back(value); }
    void append(T&& value) { m_slots.push_back(std::move(value)); }

    /// All elements of `other`, which may be this vector itself.
    void append(const vector& other)
    {
        if (&other == this) return append(vector(other));
        m_slots.insert(m_slots.end(), other.m_slots.begin(), other.m_slots.end());
    }

    /// Grows by one value-initialised element and returns it, valid until the vector grows again.
    T* appendAndReturnPtr()
    {
        m_slots.emplace_back();
        return &back();
    }

    void reserve(int capacity) { m_slots.reserve(static_cast<size_t>(std::max(capacity, 0))); }

    /// New elements are value-initialised.
    void setSize(int size) { m_slots.resize(static_cast<size_t>(size)); }
    /// New elements are copies of `value`.
    void setSize(int size, const T& value) { m_slots.resize(static_cast<size_t>(size), Slot(value)); }

    void clear() { m_slots.clear(); }

    /// Removes one element, or those of [first, last); returns the position after the removed ones.
    T* erase(const T* position) { return erase(position, position + 1); }
    T* erase(const T* first, const T* last)
    {
        const auto from = m_slots.begin() + (first - data());
        const auto next = m_slots.erase(from, from + (last - first));
        return data() + (next - m_slots.begin());
    }
    void eraseBack() { m_slots.pop_back(); }

    /// Inserts before `position`; returns the new element.
    T* insert(const T* position, const T& value)
    {
        const auto at = m_slots.insert(m_slots.begin() + (position - data()), Slot(value));
        return data() + (at - m_slots.begin());
    }

    void swap(vector& other) noexcept { m_slots.swap(other.m_slots); }
    void copy(const vector& other) { *this = other; }

    friend bool operator==(const vector& a, const vector& b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    std::vector<Slot> m_slots;
};

} // namespace zn
