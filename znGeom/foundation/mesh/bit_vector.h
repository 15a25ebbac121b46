/// `znGeom::BitVector`: the set type of the library.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// A set of indices below a size, with a running count of its members. Bit i is bit (i mod 32) of word (i / 32); bits
/// of the last word beyond the size are clear. Indices are trusted.
class ZNGEOM_API BitVector
{
public:
    BitVector() = default;
    /// All clear.
    explicit BitVector(int size) { resize(size); }
    BitVector(const BitVector&) = default;
    BitVector& operator=(const BitVector&) = default;
    /// The moved-from set is empty.
    BitVector(BitVector&& other) noexcept { swap(other); }
    BitVector& operator=(BitVector&& other) noexcept
    {
        BitVector moved(std::move(other));
        swap(moved);
        return *this;
    }

    int getSize() const { return m_size; }
    int getNumSetBits() const { return m_numSet; }
    const std::uint32_t* getWords() const { return m_words.data(); }
    int getNumWords() const { return m_words.size(); }

    bool isSet(int bit) const { return (m_words[bit >> 5] >> (bit & 31) & 1u) != 0; }
    bool operator[](int bit) const { return isSet(bit); }

    /// Setting a bit that is already set does not change the count.
    void setBit(int bit)
    {
        const std::uint32_t mask = 1u << (bit & 31);
        std::uint32_t& word = m_words[bit >> 5];
        m_numSet += (word & mask) == 0;
        word |= mask;
    }
    void clearBit(int bit)
    {
        const std::uint32_t mask = 1u << (bit & 31);
        std::uint32_t& word = m_words[bit >> 5];
        m_numSet -= (word & mask) != 0;
        word &= ~mask;
    }

    /// Old bits stay, new ones are clear.
    void resize(int size);
    void clearBits();
    void setAllBits();
    void setBits(int count, const int* bits);
    /// Makes the members those for which `isMember(index)` holds; asks in ascending order, once for each index.
    template <typename IsMember>
    void setWhere(const IsMember& isMember)
    {
        for (int first = 0; first < m_size; first += 32) {
            std::uint32_t word = 0;
            const int count = std::min(m_size - first, 32);
            for (int bit = 0; bit < count; ++bit) word |= std::uint32_t{isMember(first + bit)} << bit;
            m_words[first >> 5] = word;
        }
        recount();
    }

    /// Adds the members of `other`; grows to its size where that is larger.
    BitVector& operator|=(const BitVector& other);

    void swap(BitVector& other) noexcept;

    friend bool operator==(const BitVector& a, const BitVector& b)
    {
        return a.m_size == b.m_size && a.m_words == b.m_words;
    }

private:
    void recount();

    int m_size = 0;
    int m_numSet = 0;
    zn::vector<std::uint32_t> m_words;
};

} // namespace znGeom
