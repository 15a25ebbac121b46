#include "znGeom/foundation/text/i_string.h"

namespace znString {

namespace {

using Byte = unsigned char;

/// The character that starts at `text`, which ends with 0, and its length in bytes; 0 bytes where it is not UTF-8,
/// which includes overlong forms, surrogates and anything beyond U+10FFFF.
struct Utf8Character
{
    unsigned code = 0;
    int length = 0;

    explicit Utf8Character(const char* text)
    {
        const Byte lead = static_cast<Byte>(text[0]);
        const int expected = lead < 0x80                   ? 1
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
        if (expected == 0) return;
        unsigned value = expected == 1 ? lead : lead & (0x7Fu >> expected);
        for (int i = 1; i < expected; ++i) {
            const Byte next = static_cast<Byte>(text[i]);
            if ((next & 0xC0) != 0x80) return;
            value = value << 6 | (next & 0x3Fu);
        }
        constexpr unsigned smallest[5] = {0, 0, 0x80, 0x800, 0x10000};
        if (value < smallest[expected] || (value >= 0xD800 && value < 0xE000) || value > 0x10FFFF) return;
        code = value;
        length = expected;
    }
};

/// Whether this is UTF-8 text with every character at or below `highest`.
bool isUtf8(const char* text, unsigned highest)
{
    while (*text) {
        const Utf8Character character(text);
        if (character.length == 0 || character.code > highest) return false;
        text += character.length;
    }
    return true;
}

CString utf8FromLatin1(const char* text)
{
    CString utf8("");
    for (; *text; ++text) {
        const Byte code = static_cast<Byte>(*text);
        const char two[2] = {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
        if (code < 0x80)
            utf8.append(text, 1);
        else
            utf8.append(two, 2);
    }
    return utf8;
}

CString latin1FromUtf8(const char* text)
{
    CString latin1("");
    while (*text) {
        const Utf8Character character(text);
        const char byte = static_cast<char>(character.code);
        latin1.append(&byte, 1);
        text += character.length;
    }
    return latin1;
}

/// The highest character that an encoding can represent.
unsigned highestCode(Encoding encoding)
{
    return encoding == Encoding::Ascii ? 0x7F : encoding == Encoding::Latin1 ? 0xFF : 0x10FFFF;
}

} // namespace

IString::IString(const char* text, Encoding encoding, bool* ok) : m_bytes("")
{
    if (!text) text = "";
    const bool valid =
        encoding == Encoding::Native || encoding == Encoding::Latin1 || isUtf8(text, highestCode(encoding));
    if (ok) *ok = valid;
    if (valid) m_bytes = encoding == Encoding::Latin1 ? utf8FromLatin1(text) : CString(text);
}

CString IString::asMultibyte(Encoding encoding, bool* ok) const
{
    const bool valid = encoding == Encoding::Native || isUtf8(m_bytes.asChar(), highestCode(encoding));
    if (ok) *ok = valid;
    if (!valid) return CString("");
    return encoding == Encoding::Latin1 ? latin1FromUtf8(m_bytes.asChar()) : m_bytes;
}

IString IString::part(int begin, int end) const
{
    IString result;
    result.m_bytes = CString("");
    result.m_bytes.append(m_bytes.asChar() + begin, end - begin);
    return result;
}

IString plus(const IString& a, const IString& b)
{
    IString result = a;
    result.m_bytes.append(b.m_bytes);
    return result;
}

} // namespace znString
