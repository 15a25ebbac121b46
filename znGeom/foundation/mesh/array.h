/// `znGeom::Array`: the storage of mesh channels, whose contents a host may keep elsewhere.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

class ArrayAllocator;

/// What an `ArrayAllocator` sees of an array: how many elements it has, how large one is, and a slot for the block or
/// for whatever identifies it to the allocator.
class ZNGEOM_API ArrayBase
{
public:
    int size() const { return m_size; }
    size_t elementSize() const { return m_elementSize; }

    /// The bytes of a block for `size` elements: there is room for two more, and element 0 is the second slot.
    size_t blockBytes(int size) const { return (static_cast<size_t>(size) + 2) * m_elementSize; }

    const zn::Reference<ArrayAllocator>& allocator() const { return m_allocator; }

    void* block = nullptr; ///< the heap block; with an allocator, the allocator's own to use

protected:
    explicit ArrayBase(size_t elementSize) : m_elementSize(elementSize) {}
    ~ArrayBase() = default;

    int m_size = 0;
    size_t m_elementSize;
    zn::Reference<ArrayAllocator> m_allocator;
};

/// Keeps array contents elsewhere: in a paged store, in shared or device memory. One allocator may serve any number of
/// arrays; each call names the array. It is called from whichever thread touches the array.
class ZNGEOM_API ArrayAllocator : public zn::ReferenceCount
{
public:
    ~ArrayAllocator() override;

    /// The array's block, for reading.
    virtual void* read(ArrayBase& array) = 0;
    /// The array's block, for writing.
    virtual void* write(ArrayBase& array) = 0;
    /// Gives the array a block of `bytes`, keeping as much of the beginning of the old one as fits. An array without a
    /// block gets its first one.
    virtual void resize(ArrayBase& array, size_t bytes) = 0;
    /// Frees the array's block; the array has none afterwards.
    virtual void release(ArrayBase& array) = 0;
};

/// A block of plain elements, sized exactly. Elements that a resize adds hold no particular value until they are
/// written. Indices are trusted. A pointer to the elements is good until the next resize (with an allocator, as long
/// as the allocator says).
template <typename T>
class Array : public ArrayBase
{
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= alignof(std::max_align_t));

public:
    Array() : ArrayBase(sizeof(T)) {}
    explicit Array(int size) : Array() { resize(size); }
    Array(const Array& other) : Array() { assign(other); }
    Array(Array&& other) noexcept : Array() { exchange(other); }
    Array& operator=(const Array& other)
    {
        if (this != &other) assign(other);
        return *this;
    }
    Array& operator=(Array&& other) noexcept
    {
        if (this != &other) {
            release();
            exchange(other);
        }
        return *this;
    }
    ~Array() { release(); }

    /// For reading; null when the array is empty.
    const T* read() const
    {
        if (m_size == 0) return nullptr;
        return static_cast<const T*>(m_allocator ? m_allocator->read(const_cast<Array&>(*this)) : block) + 1;
    }
    /// For writing; null when the array is empty.
    T* write()
    {
        if (m_size == 0) return nullptr;
        return static_cast<T*>(m_allocator ? m_allocator->write(*this) : block) + 1;
    }

    const T& operator[](int index) const { return read()[index]; }
    T& operator[](int index) { return write()[index]; }

    /// Keeps the first min(old, new) elements; size 0 frees the block.
    void resize(int size)
    {
        if (size == m_size) return;
        if (size <= 0) {
            release();
        } else if (m_allocator) {
            m_allocator->resize(*this, blockBytes(size));
        } else {
            void* resized = std::realloc(block, blockBytes(size));
            if (!resized) throw std::bad_alloc();
            block = resized;
        }
        m_size = std::max(size, 0);
    }

    void fill(const T& value) { std::fill_n(write(), m_size, value); }

    /// A copy of `size` elements.
    void assign(const T* elements, int size)
    {
        resize(size);
        std::copy_n(elements, m_size, write());
    }

    /// Exchanges the blocks when neither array has an allocator, otherwise the elements one by one.
    void swap(Array& other)
    {
        if (!m_allocator && !other.m_allocator) {
            exchange(other);
            return;
        }
        const int size = m_size, otherSize = other.m_size;
        const int larger = std::max(size, otherSize);
        resize(larger);
        other.resize(larger);
        T* mine = write(); // once: an allocator may give another address at each call
        std::swap_ranges(mine, mine + larger, other.write());
        resize(otherSize);
        other.resize(size);
    }

    /// Moves the elements to where another allocator keeps them; null brings them back to the heap.
    void setAllocator(const zn::Reference<ArrayAllocator>& allocator)
    {
        if (allocator == m_allocator) return;
        Array moved;
        moved.m_allocator = allocator;
        moved.assign(*this);
        release();
        std::swap(m_size, moved.m_size);
        std::swap(block, moved.block);
        m_allocator.swap(moved.m_allocator);
    }

private:
    /// The allocators stay where they are: they belong to the owner of the array and not to its contents.
    void assign(const Array& other) { assign(other.read(), other.size()); }

    void exchange(Array& other)
    {
        std::swap(m_size, other.m_size);
        std::swap(block, other.block);
        m_allocator.swap(other.m_allocator);
    }

    void release()
    {
        if (m_size == 0) return;
        if (m_allocator)
            m_allocator->release(*this);
        else
            std::free(block);
        block = nullptr;
        m_size = 0;
    }
};

} // namespace znGeom
