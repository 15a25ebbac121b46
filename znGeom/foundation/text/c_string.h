/// `znString::CString`: a narrow string.
#pragma once

#include <string>

#include "znGeom/foundation/machine/export.h"

namespace znString {

/// A thin layer over `std::string` that also distinguishes "nothing was ever set" (null) from "set to no characters"
/// (empty).
class ZNGEOM_API CString
{
public:
    /// Null: no text was ever set.
    CString() = default;
    /// A copy of the text; null when `text` is null.
    CString(const char* text);

    /// Never a null pointer; ends with a 0.
    const char* asChar() const { return m_text.c_str(); }
    int length() const { return static_cast<int>(m_text.size()); }
    int capacity() const { return static_cast<int>(m_text.capacity()); }
    int maxSize() const;
    void reserve(int capacity);

    bool isEmpty() const { return m_text.empty(); }
    bool isNull() const { return m_isNull; }

    /// The first and the last character; 0 when empty.
    char first() const { return m_text.empty() ? '\0' : m_text.front(); }
    char last() const { return m_text.empty() ? '\0' : m_text.back(); }

    CString& append(const CString& text);
    /// `count` characters from `text`.
    CString& append(const char* text, int count);

    /// Replaces the text with printf-style text; returns this string.
    CString& format(const char* fmt, ...) ZNGEOM_PRINTF(2, 3);

private:
    std::string m_text;
    bool m_isNull = true;
};

/// Comparisons look at the characters alone: null equals empty. A null pointer counts as empty text.
ZNGEOM_API bool equal(const CString& a, const CString& b);
ZNGEOM_API bool equal(const CString& a, const char* b);
ZNGEOM_API bool notEqual(const CString& a, const CString& b);
ZNGEOM_API bool notEqual(const CString& a, const char* b);
/// Compares unsigned characters; a prefix comes before any longer string.
ZNGEOM_API bool less(const CString& a, const CString& b);
/// Appends `b` to `a`; returns `a`.
ZNGEOM_API CString& plusEqual(CString& a, const CString& b);

inline bool operator==(const CString& a, const CString& b) { return equal(a, b); }
inline bool operator==(const CString& a, const char* b) { return equal(a, b); }
inline bool operator<(const CString& a, const CString& b) { return less(a, b); }

} // namespace znString
