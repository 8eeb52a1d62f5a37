#include "platform/foundation/CharacterSet.h"

#include <gtest/gtest.h>

#include "platform/foundation/Scanner.h"
#include "platform/foundation/SentenceTokenizer.h"

namespace platform {
namespace {

struct Membership {
    const CharacterSet& (*set)();
    std::u32string_view members, others;
};

TEST(CharacterSet, HoldsThePlatformsMembers) {
    for (const Membership& row : {
             Membership{CharacterSet::whitespace, U" \t\u00A0\u1680\u2000\u200A\u200B\u202F\u205F\u3000",
                        U"\n\r\v\u0085\u2028\u180E\uFEFFa"},
             Membership{CharacterSet::newline, U"\n\v\f\r\u0085\u2028\u2029", U" \t\u001C\u001Ea"},
             Membership{CharacterSet::whitespaceAndNewline, U" \t\u200B\n\u2029", U"a\u0001\U0001F600"},
             Membership{CharacterSet::control, U"\u0000\u0009\u007F\u00AD\u180E\u200B\u200D\uFEFF\U000E0001",
                        U" a\u00A0"},
             Membership{CharacterSet::illegal, U"\u0378\uFFFE\uFDD0\U0010FFFF", U"a\u0001\U0001F600\uE000"},
             Membership{CharacterSet::alphanumeric, U"a9é\u0301漢²Ⅷ\U0001D400", U"_-# \U0001F600"},
             Membership{CharacterSet::letter, U"aß\u0301漢", U"9²_"},
             Membership{CharacterSet::uppercaseLetter, U"AÉǅİ", U"aǆⅧ漢"},
             Membership{CharacterSet::lowercaseLetter, U"aßı", U"Aǅ9"},
             Membership{CharacterSet::decimalDigit, U"09٣", U"²Ⅷa"},
             Membership{CharacterSet::punctuation, U".-_(\u3002", U"$+a"},
         }) {
        for (const char32_t point : row.members) EXPECT_TRUE(row.set().contains(point)) << std::hex << +point;
        for (const char32_t point : row.others) EXPECT_FALSE(row.set().contains(point)) << std::hex << +point;
    }
    EXPECT_FALSE(CharacterSet::illegal().contains(0xD800));
    EXPECT_FALSE(CharacterSet::illegal().contains(0x110000));
}

TEST(CharacterSet, CombinesAsValues) {
    const CharacterSet ab = CharacterSet::withCharacters(u"ab\U0001F600");
    const CharacterSet b = CharacterSet::withRanges({{U'b', U'b'}});
    EXPECT_TRUE(ab.contains(0x1F600));
    EXPECT_FALSE(ab.containsUnit(0xD83D));
    EXPECT_EQ(ab.subtracting(b).united(b), ab);
    EXPECT_FALSE(ab.subtracting(b).contains(U'b'));
    EXPECT_FALSE(ab.inverted().contains(U'a'));
    EXPECT_TRUE(ab.inverted().contains(0xD800));
    EXPECT_EQ(ab.inverted().inverted(), ab);
    EXPECT_FALSE(CharacterSet().contains(U'a'));
    EXPECT_FALSE(ab == b);
}

TEST(CharacterSet, TrimsByCodePoint) {
    const CharacterSet set = CharacterSet::withCharacters(u" \U0001F600");
    EXPECT_EQ(trimmed(u" \U0001F600a \U0001F601\U0001F600 ", set), u"a \U0001F601");
    EXPECT_EQ(trimmed(u" ", set), u"");
    EXPECT_EQ(trimmed(u"", set), u"");
    const std::u16string lone{0xDE00, u'a', 0xD83D};
    EXPECT_EQ(trimmed(lone, set), lone);
    EXPECT_EQ(findFirstOf(u"ab \U0001F600", set), 2u);
    EXPECT_EQ(findFirstOf(u"ab\U0001F600", set), 2u);
    EXPECT_EQ(findFirstOf(u"ab", set), std::u16string_view::npos);
    EXPECT_EQ(findFirstOf(u"ab", set, 7), std::u16string_view::npos);
    EXPECT_EQ(findFirstNotOf(u" \U0001F600a", set), 3u);
}

TEST(Scanner, SkipsBeforeEachItem) {
    const std::u16string_view text = u"  ab cd\n12. x ";
    Scanner scanner(text);
    EXPECT_FALSE(scanner.scanString(u"x"));
    EXPECT_EQ(scanner.scanLocation(), 0u);
    EXPECT_TRUE(scanner.scanString(u"ab"));
    EXPECT_EQ(scanner.scanUpToCharacters(CharacterSet::newline()), u"cd");
    EXPECT_EQ(scanner.scanCharacters(CharacterSet::decimalDigit()), u"12");
    EXPECT_FALSE(scanner.scanUpToString(u". "));
    EXPECT_TRUE(scanner.scanString(u". "));
    EXPECT_EQ(scanner.scanUpToString(u"none"), u"x ");
    EXPECT_TRUE(scanner.isAtEnd());
    EXPECT_FALSE(scanner.scanUpToString(u"none"));
    scanner.setScanLocation(100);
    EXPECT_EQ(scanner.scanLocation(), text.size());
}

TEST(Scanner, BlankStringIsNeverFoundBehindSkippedBlanks) {
    Scanner scanner(u"        x");
    EXPECT_FALSE(scanner.scanString(u"    "));
}

TEST(SentenceTokenizer, FindsTheSentenceOfAPosition) {
    EXPECT_EQ(sentenceRangeAt(u"One. Two! Three", 0), (Range{0, 5}));
    EXPECT_EQ(sentenceRangeAt(u"One. Two! Three", 5), (Range{5, 5}));
    EXPECT_EQ(sentenceRangeAt(u"One. Two! Three", 14), (Range{10, 5}));
    EXPECT_EQ(sentenceRangeAt(u"Version 1.2 of it", 0), (Range{0, 17}));
    EXPECT_EQ(sentenceRangeAt(u"One\nTwo", 0), (Range{0, 4}));
    EXPECT_EQ(sentenceRangeAt(u"", 0), std::nullopt);
    EXPECT_EQ(sentenceRangeAt(u"a", 1), std::nullopt);
    EXPECT_EQ(sentenceRangeAt(u" \n ", 0), std::nullopt);
    const char16_t lone[] = {0xD800, 0xDC00, 0xDC00, 0xD800};
    EXPECT_EQ(sentenceRangeAt({lone, 4}, 2), (Range{0, 4}));
}

} // namespace
} // namespace platform
