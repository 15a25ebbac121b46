/// `zn::Reference` and `zn::ReferenceCount`: sharing by a count inside the object.
#pragma once

#include <concepts>
#include <utility>

#include "znGeom/foundation/machine/export.h"

namespace zn {

/// Base of everything that is shared. The count starts at 0 and the first `Reference` is the first owner. The count is
/// a plain integer: no two threads may change the references to one object at a time. Copying an object does not copy
/// its count.
class ZNGEOM_API ReferenceCount
{
public:
    ReferenceCount() = default;
    ReferenceCount(const ReferenceCount&) {}
    ReferenceCount& operator=(const ReferenceCount&) { return *this; }
    virtual ~ReferenceCount();

    void ref() const { ++m_count; }
    /// Gives up one ownership and destroys the object when it was the last.
    void unref() const
    {
        if (--m_count <= 0) delete this;
    }
    int getCount() const { return m_count; }

private:
    mutable int m_count = 0;
};

/// An owner of a shared object, or null.
template <typename T>
class Reference
{
public:
    Reference() = default;
    Reference(std::nullptr_t) {}
    Reference(T* target) : m_target(target) { acquire(); }
    Reference(const Reference& other) : Reference(other.m_target) {}
    Reference(Reference&& other) noexcept : m_target(std::exchange(other.m_target, nullptr)) {}
    template <std::derived_from<T> U>
    Reference(const Reference<U>& other) : Reference(other.get())
    {}
    ~Reference() { release(m_target); }

    /// The new target is counted before the old one is released, so assigning an object to its own owner is safe.
    Reference& operator=(const Reference& other) { return reset(other.m_target); }
    Reference& operator=(T* target) { return reset(target); }
    Reference& operator=(Reference&& other) noexcept
    {
        T* old = m_target;
        m_target = std::exchange(other.m_target, nullptr);
        if (this != &other) release(old);
        return *this;
    }

    T* get() const { return m_target; }
    T& operator*() const { return *m_target; }
    T* operator->() const { return m_target; }
    explicit operator bool() const { return m_target != nullptr; }

    void swap(Reference& other) { std::swap(m_target, other.m_target); }

    friend bool operator==(const Reference& a, const Reference& b) { return a.m_target == b.m_target; }
    friend bool operator==(const Reference& a, const T* b) { return a.m_target == b; }

private:
    Reference& reset(T* target)
    {
        if (target) target->ref();
        release(std::exchange(m_target, target));
        return *this;
    }
    void acquire()
    {
        if (m_target) m_target->ref();
    }
    static void release(T* target)
    {
        if (target) target->unref();
    }

    T* m_target = nullptr;
};

} // namespace zn
