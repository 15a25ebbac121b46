/// Numbers with white space between them, the only content of the plain formats.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/text_file.h"

namespace znGeom::internal {

/// Reads "inf", "infinity" or "nan" in any case, with an optional sign.
template <typename T>
bool scanWord(const char*& at, T& value)
{
    using Limits = std::numeric_limits<T>;
    const bool negative = *at == '-';
    const char* const word = at + (negative || *at == '+');
    const auto isAt = [word](std::string_view name) {
        return std::equal(name.begin(), name.end(), word, [](char a, char b) { return a == (b | 0x20); });
    };
    const bool isNan = isAt("nan");
    if (!isNan && !isAt("inf")) return false;
    at = word + (isAt("infinity") ? 8 : 3);
    value = std::copysign(isNan ? Limits::quiet_NaN() : Limits::infinity(), negative ? T(-1) : T(1));
    return true;
}

/// Reads numbers with white space between them. The first thing that is not a number ends the reading for good, as does
/// the end of the text.
///
/// A real number out of range is an infinity, an `int` out of range is the nearest one. Besides decimal numbers "inf",
/// "infinity" and "nan" are known, in any case, so that what was written is read back; hexadecimal forms are not.
class NumberReader
{
public:
    explicit NumberReader(TextReader& text) : m_text(text), m_at(text.begin()) {}

    /// False, with `value` as it was, when there are no more numbers.
    bool read(int& value) { return seek() && (scanInt(m_at, value) != Scan::None || end()); }
    bool read(float& value) { return readReal(value, scanFloat); }
    bool read(double& value) { return readReal(value, scanDouble); }

    bool hasEnded() const { return m_hasEnded; }

private:
    template <typename T>
    bool readReal(T& value, Scan (*scan)(const char*&, T&))
    {
        if (!seek()) return false;
        const char* const begin = m_at;
        T number;
        if (scan(m_at, number) == Scan::None && !scanWord(m_at = begin, number)) return end();
        value = number;
        return true;
    }

    /// Moves to the next number; a number never extends beyond a block, which ends with a line end.
    bool seek()
    {
        while (!m_hasEnded) {
            while (m_at != m_text.end() && isSpace(*m_at)) ++m_at;
            if (m_at != m_text.end()) return true;
            m_hasEnded = !m_text.nextBlock();
            m_at = m_text.begin();
        }
        return false;
    }

    bool end()
    {
        m_hasEnded = true;
        return false;
    }

    TextReader& m_text;
    const char* m_at;
    bool m_hasEnded = false;
};

} // namespace znGeom::internal
