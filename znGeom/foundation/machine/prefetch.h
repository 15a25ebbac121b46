/// A hint to the processor that some memory will be needed soon.
#pragma once

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

/// Starts loading the cache line of `address`, which need not be valid. Worth its cost in loops that reach memory by
/// index in no order, some dozen steps ahead.
inline void prefetch([[maybe_unused]] const void* address)
{
#if defined(__GNUC__) && defined(__x86_64__)
    // GCC takes a function that does nothing but __builtin_prefetch for one without effect and drops its calls.
    __asm__ volatile("prefetcht0 %0" : : "m"(*static_cast<const char*>(address)));
#elif defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

} // namespace znUtil
