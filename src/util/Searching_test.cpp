#include "util/Searching.h"

#include <gtest/gtest.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"

namespace quillet {
namespace {

using platform::Range;
using platform::utf8FromUTF16;

constexpr const char* kLocales[] = {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP"};

TEST(Searching, CapitalizesWordsWithoutCapitals) {
    struct Row {
        std::u16string_view input, expected;
    };
    platform::ScopedEnvironment environment;
    for (const char* locale : kLocales) {
        environment->localeIdentifier = locale;
        for (const Row& row : {
                 Row{u"hello iPhone world", u"Hello iPhone World"},
                 Row{u"", u""},
                 Row{u" ", u" "},
                 Row{u"  a  b ", u"  A  B "},
                 Row{u"été àb", u"Été Àb"},
                 Row{u"日本 語", u"日本 語"},
                 Row{u"e\u0301a", u"E\u0301a"},
                 Row{u"3d ǆ", u"3d ǅ"},
                 Row{u"ａｂ", u"Ａｂ"},
                 Row{u"שלום 👩\u200D👧", u"שלום 👩\u200D👧"},
             })
            EXPECT_EQ(utf8FromUTF16(smartCapitalizedString(row.input)), utf8FromUTF16(row.expected)) << locale;
    }
    environment->localeIdentifier = "tr_TR";
    EXPECT_EQ(smartCapitalizedString(u"istanbul ısı"), u"İstanbul Isı");
    const std::u16string lone{0xD800, u' ', 0xDC00};
    EXPECT_EQ(smartCapitalizedString(lone), lone);
}

TEST(Searching, LastMatchThatJustFitsIsNotReported) {
    struct Row {
        std::u16string_view text, searched;
        std::vector<Range> expected;
    };
    platform::ScopedEnvironment environment;
    for (const char* locale : kLocales) {
        environment->localeIdentifier = locale;
        for (const Row& row : {
                 Row{u"abab", u"ab", {{0, 2}}},
                 Row{u"ababx", u"ab", {{0, 2}, {2, 2}}},
                 Row{u"ab", u"ab", {}},
                 Row{u"ab", u"abc", {}},
                 Row{u"xab", u"ab", {{1, 2}}}, // only a match right before it brings the bound into play
                 Row{u"Résumé RESUME.", u"resume", {{0, 6}, {7, 6}}},
                 Row{u"", u"", {}},
                 Row{u"a", u"", {}},
             })
            EXPECT_EQ(localizedStandardRangesOfString(row.text, row.searched), row.expected) << utf8FromUTF16(row.text);
    }
}

TEST(Searching, PrefixesIgnoreBlanksCaseAndDiacritics) {
    EXPECT_TRUE(hasPrefixIgnoringWhitespace(u" \t- x", u"- "));
    EXPECT_TRUE(hasPrefixIgnoringWhitespace(u"  x", u" "));
    EXPECT_FALSE(hasPrefixIgnoringWhitespace(u"\n- x", u"- "));
    EXPECT_FALSE(hasPrefixIgnoringWhitespace(u" - ", u"- "));
    EXPECT_FALSE(hasPrefixIgnoringWhitespace(u"x - ", u"- "));
    EXPECT_TRUE(hasCaseInsensitivePrefix(u"École", u"eco"));
    EXPECT_FALSE(hasCaseInsensitivePrefix(u"École", u"cole"));
    EXPECT_FALSE(hasCaseInsensitivePrefix(u"École", u""));
}

TEST(Searching, MegabyteTakesNoQuadraticTime) {
    const std::u16string text(1'000'000, u'a');
    EXPECT_TRUE(localizedStandardRangesOfString(text, std::u16string(500'000, u'a') + u'b').empty());
    EXPECT_EQ(localizedStandardRangesOfString(text, u"A").size(), 999'999u);
    EXPECT_TRUE(hasCaseInsensitivePrefix(text, text));
    EXPECT_FALSE(hasCaseInsensitivePrefix(text, text + u'a'));
}

} // namespace
} // namespace quillet
