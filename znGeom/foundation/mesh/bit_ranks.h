/// `znGeom::BitRanks`: the places of the members of a set.
#pragma once

#include <bit>

#include "znGeom/foundation/mesh/bit_vector.h"

namespace znGeom {

/// How many members of a set are lower than an index: the place of a member in their list, without a search. Takes one
/// number for every 32 indices. The set is borrowed and must not change.
class BitRanks
{
public:
    explicit BitRanks(const BitVector& bits) : m_words(bits.getWords()), m_below(bits.getNumWords())
    {
        int count = 0;
        for (int w = 0; w < m_below.size(); ++w) {
            m_below[w] = count;
            count += std::popcount(m_words[w]);
        }
    }

    /// \param index  0 to the size of the set - 1
    int operator()(int index) const
    {
        const std::uint32_t lower = m_words[index >> 5] & ((1u << (index & 31)) - 1u);
        return m_below[index >> 5] + std::popcount(lower);
    }

private:
    const std::uint32_t* m_words;
    zn::vector<int> m_below; ///< for each word, the members in the words before it
};

} // namespace znGeom
