/// `zn::ImplBase` and `zn::ImplPointer`: hidden implementations.
#pragma once

#include <utility>

#include "znGeom/foundation/machine/export.h"

namespace zn {

/// The root of hidden implementations. A public class that hides its state has an `ImplPointer` to a subclass of this,
/// named after it with `Impl` at the end.
class ZNGEOM_API ImplBase
{
public:
    virtual ~ImplBase();
};

/// A pointer to an implementation and whether it owns it. The one that was made with the implementation does and
/// deletes it in the end. A copy shares it, does not own it and must not outlive its source. A move hands the ownership
/// on; the source goes on sharing. \tparam Impl  may be incomplete in the header of the public class
template <typename Impl>
class ImplPointer
{
public:
    /// To nothing.
    ImplPointer() = default;
    /// \param impl  taken over
    explicit ImplPointer(Impl* impl) : m_impl(impl), m_owned(true) {}
    ImplPointer(const ImplPointer& other) : m_impl(other.m_impl) {}
    ImplPointer(ImplPointer&& other) noexcept : m_impl(other.m_impl), m_owned(std::exchange(other.m_owned, false)) {}
    ImplPointer& operator=(const ImplPointer&) = delete;
    ImplPointer& operator=(ImplPointer&& other) noexcept
    {
        ImplPointer moved(std::move(other));
        std::swap(m_impl, moved.m_impl);
        std::swap(m_owned, moved.m_owned);
        return *this;
    }
    ~ImplPointer()
    {
        if (m_owned) delete m_impl;
    }

    Impl* operator->() const { return static_cast<Impl*>(m_impl); }
    explicit operator bool() const { return m_impl != nullptr; }

private:
    ImplBase* m_impl = nullptr;
    bool m_owned = false;
};

} // namespace zn
