#include "platform/foundation/CodePage.h"

#include <gtest/gtest.h>

namespace platform {

namespace {

TEST(CodePage, DecodesTheCodePagesOfOldDocuments) {
    struct Row {
        std::string_view codePage, bytes;
        std::u16string_view text;
    };
    const Row rows[] = {
        {"windows-1252", "caf\xE9 \x80", u"caf\u00E9 \u20AC"},
        {"windows-1250", "\xB9\x9C", u"\u0105\u015B"},
        {"windows-1251", "\xCF\xF0", u"\u041F\u0440"},
        {"windows-932", "\x93\xFA\x96\x7B", u"\u65E5\u672C"},
        {"windows-936", "\xD6\xD0", u"\u4E2D"},
        {"windows-949", "\xC7\xD1", u"\uD55C"},
        {"windows-950", "\xA4\xA4", u"\u4E2D"},
        {"macintosh", "\x8E", u"\u00E9"},
        {"UTF-8", "\xF0\x9F\x98\x80", u"\U0001F600"},
        {"windows-1252", "", u""},
    };
    for (const Row& row : rows) EXPECT_EQ(decodeBytes(row.bytes, row.codePage), row.text) << row.codePage;
}

TEST(CodePage, ReplacesWhatACodePageDoesNotHave) {
    EXPECT_EQ(decodeBytes("a\xFF", "UTF-8"), u"a\uFFFD");
    EXPECT_EQ(decodeBytes("\x93", "windows-932"), u"\uFFFD");
}

TEST(CodePage, KnowsNoCodePageOfAnInventedName) {
    EXPECT_FALSE(decodeBytes("x", "no such code page"));
    EXPECT_FALSE(decodeBytes("x", ""));
}

} // namespace

} // namespace platform
