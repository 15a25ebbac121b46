#include "znGeom/foundation/machine/huge_pages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace znUtil {

void adviseHugePages([[maybe_unused]] void* block, [[maybe_unused]] size_t bytes)
{
#if defined(__linux__)
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t begin = (address + hugePageBytes - 1) & ~(hugePageBytes - 1);
    const std::uintptr_t end = (address + bytes) & ~(hugePageBytes - 1);
    // A hint: nothing depends on the answer.
    if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#endif
}

} // namespace znUtil
