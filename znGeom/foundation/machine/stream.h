/// Writing large results past the caches.
#pragma once

#include <cstring>

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

/// Writes 64 bytes of a result that is larger than the caches and is not read again soon: the processor then need not
/// read the old content first, which halves the traffic. Where the compiler offers nothing of the kind, an ordinary
/// copy. Call `endStreaming` after the last one.
/// \param to  aligned to 64 bytes
inline void streamLine(void* to, const void* from)
{
#if defined(__x86_64__) && defined(__GNUC__)
    // Word by word, as the caller has just written them: a wider load would have to wait until they have left the
    // processor.
    using Word = long long __attribute__((may_alias));
    const auto* const words = static_cast<const Word*>(from);
    auto* const place = static_cast<Word*>(to);
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) {
#if defined(__clang__)
        __builtin_nontemporal_store(words[i], place + i);
#else
        __builtin_ia32_movnti64(place + i, words[i]);
#endif
    }
#else
    std::memcpy(to, from, 64);
#endif
}

/// Other threads see what was written as soon as they see anything that this thread writes from here on.
inline void endStreaming()
{
#if defined(__x86_64__) && defined(__GNUC__)
    __builtin_ia32_sfence();
#endif
}

} // namespace znUtil
