/// Arrays that begin on a cache line.
#pragma once

#include <memory>
#include <new>
#include <type_traits>

#include "znGeom/foundation/machine/huge_pages.h"

namespace znGeom::internal {

/// Frees what `makeAlignedArray` allocated.
struct AlignedDelete
{
    std::size_t alignment;
    void operator()(void* block) const { ::operator delete(block, std::align_val_t(alignment)); }
};

template <typename T>
using AlignedArray = std::unique_ptr<T[], AlignedDelete>;

/// The elements have the values of their default constructors; where these do nothing they are uninitialised. Large
/// arrays take whole large pages where the system has them.
template <typename T>
AlignedArray<T> makeAlignedArray(std::size_t count)
{
    static_assert(std::is_trivially_destructible_v<T>);
    const std::size_t bytes = znUtil::wholePages(count * sizeof(T));
    const std::size_t alignment = bytes >= znUtil::hugePageBytes ? znUtil::hugePageBytes : 64;
    void* const block = ::operator new(bytes, std::align_val_t(alignment));
    znUtil::adviseHugePages(block, bytes);
    AlignedArray<T> array(static_cast<T*>(block), AlignedDelete{alignment});
    std::uninitialized_default_construct_n(array.get(), count);
    return array;
}

} // namespace znGeom::internal
