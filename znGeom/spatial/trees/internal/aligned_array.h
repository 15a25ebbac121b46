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

/// The elements are uninitialised. Large arrays are placed on large pages where the system has them.
template <typename T>
AlignedArray<T> makeAlignedArray(std::size_t count)
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_default_constructible_v<T>);
    const std::size_t bytes = count * sizeof(T);
    const bool isHuge = bytes >= znUtil::hugePageBytes;
    const std::size_t alignment = isHuge ? znUtil::hugePageBytes : 64;
    void* const block = ::operator new(bytes, std::align_val_t(alignment));
    if (isHuge) znUtil::adviseHugePages(block, bytes);
    return AlignedArray<T>(static_cast<T*>(block), AlignedDelete{alignment});
}

} // namespace znGeom::internal
