/// A hint that a large block of memory will be used in full.
#pragma once

#include <cstddef>

#include "znGeom/foundation/machine/export.h"

namespace znUtil {

/// The size of a large page.
inline constexpr size_t hugePageBytes = size_t(2) << 20;

/// The size of a block that has `bytes`: of a large one, up to the end of its last large page, so that there is no rest
/// to be touched page by page.
constexpr size_t wholePages(size_t bytes)
{
    return bytes < hugePageBytes ? bytes : (bytes + hugePageBytes - 1) & ~(hugePageBytes - 1);
}

/// Asks the system to back a block with large pages: touching it for the first time then costs a fraction of what it
/// costs page by page. Applies to the large pages that lie wholly within the block; to be called before the first
/// touch. Has no effect where the system lacks the feature.
ZNGEOM_API void adviseHugePages(void* block, size_t bytes);

} // namespace znUtil
