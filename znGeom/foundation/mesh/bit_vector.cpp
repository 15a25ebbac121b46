#include "znGeom/foundation/mesh/bit_vector.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace znGeom {

namespace {

int wordsFor(int size) { return size / 32 + (size % 32 != 0); }

/// The bits of the last word that lie below the size.
std::uint32_t lastWordMask(int size) { return size % 32 == 0 ? ~0u : (1u << (size % 32)) - 1; }

} // namespace

void BitVector::recount()
{
    m_numSet = 0;
    for (const std::uint32_t word : m_words) m_numSet += std::popcount(word);
}

void BitVector::resize(int size)
{
    const bool shrinks = size < m_size;
    m_size = std::max(size, 0);
    m_words.setSize(wordsFor(m_size), 0);
    if (!shrinks) return;
    if (m_size > 0) m_words.back() &= lastWordMask(m_size);
    recount();
}

void BitVector::clearBits()
{
    std::fill(m_words.begin(), m_words.end(), 0u);
    m_numSet = 0;
}

void BitVector::setAllBits()
{
    std::fill(m_words.begin(), m_words.end(), ~0u);
    if (m_size > 0) m_words.back() &= lastWordMask(m_size);
    m_numSet = m_size;
}

void BitVector::setBits(int count, const int* bits)
{
    for (int i = 0; i < count; ++i) setBit(bits[i]);
}

BitVector& BitVector::operator|=(const BitVector& other)
{
    if (other.m_size > m_size) resize(other.m_size);
    for (int i = 0; i < other.m_words.size(); ++i) m_words[i] |= other.m_words[i];
    recount();
    return *this;
}

void BitVector::swap(BitVector& other) noexcept
{
    std::swap(m_size, other.m_size);
    std::swap(m_numSet, other.m_numSet);
    m_words.swap(other.m_words);
}

} // namespace znGeom
