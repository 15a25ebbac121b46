/// `znGeom::BlindData`: a value beside an element of a half-edge mesh.
#pragma once

#include <bit>
#include <cstdint>

#include "znGeom/foundation/machine/language.h"

namespace znGeom {

/// One value beside an element, a number or a flag, and a word that tells which.
class BlindData
{
public:
    enum Kind : std::uint64_t { Unwritten, Number, Flag };

    constexpr BlindData() = default;
    constexpr BlindData(bool flag) : m_value(flag ? 1u : 0u), m_kind(Flag) {}
    constexpr BlindData(double number) : m_value(std::bit_cast<std::uint64_t>(number)), m_kind(Number) {}
    constexpr BlindData(int number) : BlindData(double(number)) {}

    /// The value as it was written; 0 and false while nothing was.
    constexpr double asDouble() const { return std::bit_cast<double>(m_value); }
    constexpr bool asBool() const { return m_value != 0; }
    constexpr Kind kind() const { return m_kind; }
    friend constexpr bool operator==(const BlindData&, const BlindData&) = default;

private:
    std::uint64_t m_value = 0;
    Kind m_kind = Unwritten;
};

} // namespace znGeom
