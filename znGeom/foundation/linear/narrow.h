/// Conversions between `double` and `float` that no compiler may drop.
#pragma once

#include <type_traits>

#include "znGeom/foundation/machine/language.h"

namespace znLinear {

/// The nearest `float`.
///
/// A `float` that is widened again at once keeps its 24 bits: GCC 12, vectorising straight-line code at -O2 and -O3,
/// takes a pair of such conversions for none at all and leaves the `double` as it was. It can't see through this one.
/// Loops over long arrays don't suffer from that, and are vectorised only with a plain `float(value)`.
constexpr float narrow(double value)
{
    float narrowed = static_cast<float>(value);
#if defined(__GNUC__) && !defined(__clang__)
    if (!std::is_constant_evaluated()) {
#if defined(__x86_64__)
        __asm__("" : "+x"(narrowed));
#else
        __asm__("" : "+m"(narrowed));
#endif
    }
#endif
    return narrowed;
}

/// A number in the precision T, either way.
template <typename T, typename U>
constexpr T inPrecision(U value)
{
    if constexpr (sizeof(T) < sizeof(U)) return narrow(value);
    return static_cast<T>(value);
}

} // namespace znLinear
