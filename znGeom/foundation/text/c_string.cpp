#include "znGeom/foundation/text/c_string.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <string_view>

namespace znString {

CString::CString(const char* text) : m_text(text ? text : ""), m_isNull(!text) {}

int CString::maxSize() const
{
    return static_cast<int>(std::min<size_t>(m_text.max_size(), std::numeric_limits<int>::max()));
}

void CString::reserve(int capacity)
{
    if (capacity > 0) m_text.reserve(static_cast<size_t>(capacity));
}

CString& CString::append(const CString& text)
{
    m_isNull = m_isNull && text.m_isNull;
    m_text.append(text.m_text);
    return *this;
}

CString& CString::append(const char* text, int count)
{
    m_isNull = false;
    m_text.append(text, static_cast<size_t>(count));
    return *this;
}

CString& CString::format(const char* fmt, ...)
{
    std::va_list arguments, again;
    va_start(arguments, fmt);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, fmt, arguments);
    va_end(arguments);
    // An argument may be this string's own text: build the new one beside it.
    std::string text(static_cast<size_t>(std::max(length, 0)), '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, fmt, again);
    va_end(again);
    m_text.swap(text);
    m_isNull = false;
    return *this;
}

bool equal(const CString& a, const CString& b)
{
    return std::string_view(a.asChar(), static_cast<size_t>(a.length())) ==
           std::string_view(b.asChar(), static_cast<size_t>(b.length()));
}
bool equal(const CString& a, const char* b) { return equal(a, CString(b)); }
bool notEqual(const CString& a, const CString& b) { return !equal(a, b); }
bool notEqual(const CString& a, const char* b) { return !equal(a, b); }

bool less(const CString& a, const CString& b)
{
    return std::string_view(a.asChar(), static_cast<size_t>(a.length())) <
           std::string_view(b.asChar(), static_cast<size_t>(b.length()));
}

CString& plusEqual(CString& a, const CString& b) { return a.append(b); }

} // namespace znString
