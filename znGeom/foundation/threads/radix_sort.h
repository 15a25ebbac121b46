/// `znUtil::radixSort`: the sort for large arrays whose order is that of a 32-bit key.
#pragma once

#include <bit>
#include <cstdint>

#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znUtil {

struct KeyedIndex
{
    std::uint32_t key;
    int index;
};

/// A key whose unsigned order is the order of the numbers: -0 and +0 get the same one, NaNs lie beyond the infinities
/// of their sign.
inline std::uint32_t sortableKey(float value)
{
    constexpr std::uint32_t sign = 0x80000000u;
    const auto bits = std::bit_cast<std::uint32_t>(value);
    if (bits == sign) return sign; // -0, as +0
    return (bits & sign) != 0 ? ~bits : bits | sign;
}

/// Sorts `count` records by their keys, records with equal keys staying in their order.
///
/// \param scratch  room for as many records
///
/// Linear: at most three passes over the records by digits of eleven bits, least significant first; a digit that is the
/// same in all records costs no pass. Runs on the given pool; the result does not depend on its size.
ZNGEOM_API void radixSort(KeyedIndex* records, KeyedIndex* scratch, int count, ThreadPool& pool);

} // namespace znUtil
