/// Loops over a `BitVector` that take it a word at a time.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "znGeom/foundation/mesh/bit_vector.h"

namespace znGeom {

/// Calls `visit(index)` for each member, ascending. The set must not change meanwhile.
template <typename Visit>
void forEachSetBit(const BitVector& bits, const Visit& visit)
{
    const std::uint32_t* words = bits.getWords();
    const int numWords = bits.getNumWords();
    for (int w = 0; w < numWords; ++w)
        for (std::uint32_t left = words[w]; left != 0; left &= left - 1) visit(32 * w + std::countr_zero(left));
}

/// The members below `limit`, ascending: a set may be older than what it refers to, and larger.
inline zn::vector<int> listMembers(const BitVector& bits, int limit)
{
    zn::vector<int> members(bits.getNumSetBits());
    int* next = members.data();
    forEachSetBit(bits, [&next, limit](int i) {
        if (i < limit) *next++ = i;
    });
    members.setSize(static_cast<int>(next - members.data()));
    return members;
}

/// Calls `visit(begin, end)` for the runs of indices below the size that are not in the set, ascending. A run ends at a
/// multiple of 32 at the latest, where the next one may continue it. The set must not change meanwhile.
template <typename Visit>
void forEachClearRun(const BitVector& bits, const Visit& visit)
{
    const std::uint32_t* words = bits.getWords();
    const int size = bits.getSize(), numWords = bits.getNumWords();
    for (int w = 0; w < numWords; ++w) {
        const int first = 32 * w;
        std::uint32_t left = ~words[w];
        if (size - first < 32) left &= (1u << (size - first)) - 1;
        while (left != 0) {
            const int skipped = std::countr_zero(left);
            const int begin = first + skipped, end = begin + std::countr_one(left >> skipped);
            visit(begin, end);
            left &= left + (1u << skipped); // the carry ripples through the run and clears it
        }
    }
}

} // namespace znGeom
