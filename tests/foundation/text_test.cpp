#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "znGeom/foundation/text.h"

namespace {

using namespace znString;

TEST(CString, DistinguishesNullFromEmpty)
{
    CString never, from(static_cast<const char*>(nullptr)), empty("");
    EXPECT_TRUE(never.isNull() && from.isNull() && never.isEmpty() && CString(never).isNull());
    EXPECT_TRUE(!empty.isNull() && empty.isEmpty() && equal(never, empty));
    EXPECT_TRUE(equal(never, static_cast<const char*>(nullptr)));
    EXPECT_TRUE(never.append(from).isNull() && !never.append(empty).isNull());
    EXPECT_TRUE(!from.format("%s", "").isNull() && from.isEmpty() && from.first() == 0 && from.last() == 0);
}

TEST(CString, TakesItsOwnTextAsAnArgument)
{
    CString text("seven");
    text.format("%s and %s are %d%%", text.asChar(), text.asChar(), 14);
    EXPECT_STREQ(plusEqual(text, text).asChar(), "seven and seven are 14%seven and seven are 14%");
    EXPECT_TRUE(text.length() == 46 && text.first() == 's' && text.last() == '%');
    EXPECT_EQ(text.format("%5000d|", 1).length(), 5001);
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

TEST(IString, LetsOnlyValidTextInAndOut)
{
    // Latin-1; other UTF-8; nothing to continue, cut off, overlong, surrogates, beyond U+10FFFF.
    const char* const groups[] = {"plain\x7F \xC2\x80\xC3\xBF",
                                  "\xC4\x80 \xE0\xA0\x80 \xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF "
                                  "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
                                  "\x80 \xC3 \xE2\x82 \xF0\x9F\x98 \xC3( \xC0\xAF \xC1\xBF \xE0\x9F\xBF "
                                  "\xF0\x8F\xBF\xBF \xED\xA0\x80 \xED\xBF\xBF \xF4\x90\x80\x80 "
                                  "\xF8\x88\x80\x80\x80 \xFF"};
    const auto check = [](const char* bytes, bool isUtf8, bool isLatin1) {
        SCOPED_TRACE(bytes);
        bool ok = !isUtf8;
        EXPECT_EQ(IString(bytes, Encoding::Utf8, &ok).asMultibyte(Encoding::Utf8), isUtf8 ? bytes : "");
        EXPECT_EQ(ok, isUtf8);
        // File names may be any bytes and come back as they were; as text they are checked on the way out.
        const IString native(bytes, Encoding::Native, &ok);
        EXPECT_TRUE(ok && native.asMultibyte(Encoding::Native, &ok) == bytes && ok);
        EXPECT_EQ(native.asMultibyte(Encoding::Utf8, &ok), isUtf8 ? bytes : "");
        EXPECT_EQ(ok, isUtf8);
        native.asMultibyte(Encoding::Latin1, &ok);
        EXPECT_EQ(ok, isLatin1);
    };
    for (int kind = 0; kind < 3; ++kind) {
        std::istringstream group(groups[kind]);
        for (std::string bytes; group >> bytes;) check(bytes.c_str(), kind < 2, kind < 1);
    }
}

TEST(IString, Latin1ComesBack)
{
    std::string all;
    for (int code = 1; code < 256; ++code) all += char(code);
    bool in = true, out = true;
    const IString text(all.c_str(), Encoding::Latin1), umlaut("\xC3\xA4", Encoding::Ascii, &in);
    EXPECT_EQ(text.asMultibyte(Encoding::Utf8).length(), 127 + 2 * 128);
    EXPECT_EQ(text.asMultibyte(Encoding::Latin1), all.c_str());
    EXPECT_TRUE(umlaut.isEmpty() && !in && text.asMultibyte(Encoding::Ascii, &out).isEmpty() && !out);
}

TEST(Filename, FallsIntoItsParts)
{
    const char* const cases[][4] = {{"/models/cow.obj", "/models/", "cow.obj", "cow"},
                                    {"cow.tar.gz", "", "cow.tar.gz", "cow.tar"},
                                    {"/a.b/.hidden", "/a.b/", ".hidden", ".hidden"},
                                    {".hidden.obj", "", ".hidden.obj", ".hidden"},
                                    {"/\xFF\xFE.obj", "/", "\xFF\xFE.obj", "\xFF\xFE"},
                                    {"dir/", "dir/", "", ""},
                                    {"cow.", "", "cow.", "cow"},
                                    {"..", "", "..", ".."},
                                    {"", "", "", ""}};
    for (const auto& [path, directory, base, trunk] : cases) {
        SCOPED_TRACE(path);
        const znOS::Filename file(path);
        EXPECT_EQ(file.dirname().asMultibyte(Encoding::Native), directory);
        EXPECT_EQ(file.basename().asMultibyte(Encoding::Native), base);
        EXPECT_EQ(file.baseTrunk().asMultibyte(Encoding::Native), trunk);
        EXPECT_EQ(plus(file.dirname(), file.basename()), file.path());
    }
}

} // namespace
