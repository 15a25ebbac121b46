#include "znGeom/foundation/machine/huge_pages.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace znUtil {

void adviseHugePages([[maybe_unused]] void* block, [[maybe_unused]] size_t bytes)
{
#if defined(__linux__)
    madvise(block, bytes, MADV_HUGEPAGE); // a hint: nothing depends on the answer
#endif
}

} // namespace znUtil
