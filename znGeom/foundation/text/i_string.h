/// `znString::IString`: text that knows its characters, whatever bytes it came in.
#pragma once

#include "znGeom/foundation/text/c_string.h"

namespace znString {

/// How bytes stand for characters.
enum class Encoding {
    Native, ///< the bytes that the operating system takes for file names, passed through untouched
    Utf8,
    Latin1,
    Ascii
};

/// An encoded string. Text made from `Native` bytes keeps them as they are, so every file name survives the round
/// trip; the other encodings are kept as UTF-8 and checked on the way in and out.
class ZNGEOM_API IString
{
public:
    IString() = default;
    /// \param text  ends with 0; null gives an empty string
    /// \param ok    set to whether the bytes are valid in that encoding, if not null; the string is empty when they are
    ///              not
    IString(const char* text, Encoding encoding, bool* ok = nullptr);

    /// The text in an encoding. `ok`, if not null, is set to whether it can represent every character; the result is
    /// empty when it cannot.
    CString asMultibyte(Encoding encoding, bool* ok = nullptr) const;

    bool isEmpty() const { return m_bytes.isEmpty(); }

    /// The part from byte `begin` up to `end`; both must lie on character boundaries.
    IString part(int begin, int end) const;

    friend ZNGEOM_API IString plus(const IString& a, const IString& b);
    friend bool operator==(const IString& a, const IString& b) { return a.m_bytes == b.m_bytes; }

private:
    CString m_bytes;
};

/// `a` followed by `b`.
ZNGEOM_API IString plus(const IString& a, const IString& b);

} // namespace znString
