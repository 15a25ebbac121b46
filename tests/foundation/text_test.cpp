#include <gtest/gtest.h>

#include "znGeom/foundation/strings.h"

namespace {

using namespace znString;
using znOS::Filename;

TEST(CString, TellsNullFromEmpty)
{
    CString never, from(static_cast<const char*>(nullptr)), empty("");
    EXPECT_TRUE(never.isNull() && from.isNull() && never.isEmpty());
    EXPECT_TRUE(!empty.isNull() && empty.isEmpty());
    EXPECT_STREQ(never.asChar(), "");
    EXPECT_TRUE(equal(never, empty) && equal(never, static_cast<const char*>(nullptr)));
    EXPECT_TRUE(CString(never).isNull());
    never.append(from);
    EXPECT_TRUE(never.isNull());
    never.append(empty);
    EXPECT_FALSE(never.isNull());
    from.format("%s", "");
    EXPECT_TRUE(!from.isNull() && from.isEmpty());
    EXPECT_TRUE(from.first() == 0 && from.last() == 0);
}

TEST(CString, TakesItsOwnTextAsAnArgument)
{
    CString text("seven");
    text.format("%s and %s are %d%%", text.asChar(), text.asChar(), 14);
    EXPECT_STREQ(text.asChar(), "seven and seven are 14%");
    EXPECT_STREQ(plusEqual(text, text).asChar(), "seven and seven are 14%seven and seven are 14%");
    EXPECT_EQ(text.length(), 46);
    EXPECT_TRUE(text.first() == 's' && text.last() == '%');
    EXPECT_STREQ(text.format("%d", 7).asChar(), "7");
    CString big;
    big.format("%5000d|", 1);
    EXPECT_EQ(big.length(), 5001);
    big.reserve(9000);
    EXPECT_TRUE(big.capacity() >= 9000 && big.maxSize() > 1000000);
}

TEST(CString, IsOrderedByUnsignedCharacters)
{
    const char* const ascending[] = {"", "A", "AB", "a", "z", "\xC3\xA4"};
    for (int i = 0; i < 6; ++i)
        for (int k = 0; k < 6; ++k) {
            EXPECT_EQ(less(ascending[i], ascending[k]), i < k);
            EXPECT_EQ(notEqual(CString(ascending[i]), ascending[k]), i != k);
        }
}

TEST(IString, LetsOnlyValidTextIn)
{
    struct Case
    {
        const char* bytes;
        bool utf8, latin1OfUtf8;
    };
    const Case cases[] = {
        {"", true, true},
        {"plain\x7F", true, true},
        {"\xC2\x80\xC3\xBF", true, true}, // U+0080, U+00FF
        {"\xC4\x80", true, false},        // U+0100
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", true, false},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", true, false},
        {"\x80", false, false}, // nothing to continue
        {"\xC3", false, false}, // cut off
        {"\xE2\x82", false, false},
        {"\xF0\x9F\x98", false, false},
        {"\xC3(", false, false},
        {"\xC0\xAF", false, false}, // overlong
        {"\xC1\xBF", false, false},
        {"\xE0\x9F\xBF", false, false},
        {"\xF0\x8F\xBF\xBF", false, false},
        {"\xED\xA0\x80", false, false}, // surrogates
        {"\xED\xBF\xBF", false, false},
        {"\xF4\x90\x80\x80", false, false}, // beyond U+10FFFF
        {"\xF8\x88\x80\x80\x80", false, false},
        {"\xFF", false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        bool ok = !c.utf8;
        const IString text(c.bytes, Encoding::Utf8, &ok);
        EXPECT_EQ(ok, c.utf8);
        EXPECT_EQ(text.asMultibyte(Encoding::Utf8), c.utf8 ? c.bytes : "");
        // File names may be any bytes and come back as they were; as text they are checked on the way out.
        const IString native(c.bytes, Encoding::Native, &ok);
        EXPECT_TRUE(ok && native.asMultibyte(Encoding::Native, &ok) == c.bytes && ok);
        EXPECT_EQ(native.asMultibyte(Encoding::Utf8, &ok), c.utf8 ? c.bytes : "");
        EXPECT_EQ(ok, c.utf8);
        native.asMultibyte(Encoding::Latin1, &ok);
        EXPECT_EQ(ok, c.latin1OfUtf8);
    }
    bool ok = true;
    IString("\xC3\xA4", Encoding::Ascii, &ok);
    EXPECT_FALSE(ok);
    IString(nullptr, Encoding::Utf8, &ok);
    EXPECT_TRUE(ok);
}

TEST(IString, Latin1ComesBack)
{
    std::string all;
    for (int code = 1; code < 256; ++code) all += char(code);
    const IString text(all.c_str(), Encoding::Latin1);
    EXPECT_EQ(text.asMultibyte(Encoding::Utf8).length(), 127 + 2 * 128);
    EXPECT_EQ(text.asMultibyte(Encoding::Latin1), all.c_str());
    EXPECT_EQ(plus(IString("\xE4", Encoding::Latin1), IString("\xC3\xB6", Encoding::Utf8)),
              IString("\xC3\xA4\xC3\xB6", Encoding::Utf8));
    bool ok = true;
    EXPECT_TRUE(text.asMultibyte(Encoding::Ascii, &ok).isEmpty() && !ok);
}

TEST(Filename, FallsIntoItsParts)
{
    struct Case
    {
        const char *path, *dirname, *basename, *trunk;
    };
    const Case cases[] = {{"/models/cow.obj", "/models/", "cow.obj", "cow"},
                          {"cow.tar.gz", "", "cow.tar.gz", "cow.tar"},
                          {"/a.b/cow", "/a.b/", "cow", "cow"},
                          {"../.hidden", "../", ".hidden", ".hidden"},
                          {".hidden.obj", "", ".hidden.obj", ".hidden"},
                          {"dir/", "dir/", "", ""},
                          {"", "", "", ""},
                          {"/", "/", "", ""},
                          {"cow.", "", "cow.", "cow"},
                          {"..", "", "..", ".."},
                          {"/\xFF\xFE.obj", "/", "\xFF\xFE.obj", "\xFF\xFE"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        const Filename file(c.path);
        EXPECT_EQ(file.dirname().asMultibyte(Encoding::Native), c.dirname);
        EXPECT_EQ(file.basename().asMultibyte(Encoding::Native), c.basename);
        EXPECT_EQ(file.baseTrunk().asMultibyte(Encoding::Native), c.trunk);
        EXPECT_EQ(plus(file.dirname(), file.basename()), file.path());
    }
}

} // namespace
