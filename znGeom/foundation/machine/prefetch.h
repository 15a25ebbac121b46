/// A hint to the processor that some memory will be needed soon.
#pragma once

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

/// Starts loading the cache line of `address`, which need not be valid. Worth its cost in loops that access memory by
/// index in no particular order, about a dozen steps ahead.
inline void prefetch([[maybe_unused]] const void* address)
{
#if defined(__GNUC__) && defined(__x86_64__)
    // GCC takes a function that only calls __builtin_prefetch for one without effect and drops the calls to it.
    __asm__ volatile("prefetcht0 %0" : : "m"(*static_cast<const char*>(address)));
#elif defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

} // namespace znUtil
