/// What searches of trees line up: nodes and triangles by a bound.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

/// The bits of a bound, not negative, above a number: keys ascend as their bounds do.
using SearchKey = std::uint64_t;

ZNGEOM_INLINE SearchKey makeKey(float bound, int number)
{
    return SearchKey{std::bit_cast<std::uint32_t>(bound)} << 32 | static_cast<std::uint32_t>(number);
}
ZNGEOM_INLINE float boundOf(SearchKey key) { return std::bit_cast<float>(static_cast<std::uint32_t>(key >> 32)); }
ZNGEOM_INLINE int numberOf(SearchKey key) { return static_cast<int>(key & 0xFFFFFFFFu); }

/// Starts loading all of a record.
template <typename T>
ZNGEOM_INLINE void prefetchLines(const T& record)
{
    for (std::size_t at = 0; at < sizeof(T); at += 64) znUtil::prefetch(reinterpret_cast<const char*>(&record) + at);
}

} // namespace znGeom::internal
