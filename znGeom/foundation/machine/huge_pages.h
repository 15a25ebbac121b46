/// A hint that a large block of memory will be used whole.
#pragma once

#include <cstddef>

#include "znGeom/foundation/machine/export.h"

namespace znUtil {

/// The size of a large page.
inline constexpr size_t hugePageBytes = size_t(2) << 20;

/// Asks the system to back a block with large pages: its first touch then costs a small part of what it costs page by
/// page. Concerns the whole large pages within the block; before the first touch. Without effect where the system knows
/// no such thing.
ZNGEOM_API void adviseHugePages(void* block, size_t bytes);

} // namespace znUtil
