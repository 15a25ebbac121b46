/// `znUtil::BitField32`: a word of 32 flags.
#pragma once

#include <bit>
#include <cstdint>

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

class BitField32
{
public:
    constexpr BitField32() = default;
    explicit constexpr BitField32(std::uint32_t bits) : m_bits(bits) {}

    constexpr bool operator[](int bit) const { return (m_bits >> bit & 1u) != 0; }
    constexpr void set(int bit, bool on) { m_bits = on ? m_bits | 1u << bit : m_bits & ~(1u << bit); }
    constexpr bool any() const { return m_bits != 0; }
    constexpr int count() const { return std::popcount(m_bits); }
    constexpr std::uint32_t value() const { return m_bits; }

    friend constexpr BitField32 operator|(BitField32 a, BitField32 b) { return BitField32(a.m_bits | b.m_bits); }
    friend constexpr BitField32 operator&(BitField32 a, BitField32 b) { return BitField32(a.m_bits & b.m_bits); }
    friend constexpr BitField32 operator^(BitField32 a, BitField32 b) { return BitField32(a.m_bits ^ b.m_bits); }
    friend constexpr BitField32 operator~(BitField32 a) { return BitField32(~a.m_bits); }
    friend constexpr bool operator==(BitField32, BitField32) = default;

private:
    std::uint32_t m_bits = 0;
};

} // namespace znUtil
