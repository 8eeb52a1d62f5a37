#include "platform/foundation/TextFolding.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/LocalizedSearch.h"

namespace platform {
namespace {

constexpr const char* kLocales[] = {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP"};

TEST(TextFolding, FilenamesIgnoreCaseDiacriticsAndWidthInEveryLocale) {
    struct Row {
        std::u16string_view a, b;
        bool equal;
    };
    ScopedEnvironment environment;
    for (const char* locale : kLocales) {
        environment->localeIdentifier = locale;
        for (const Row& row : {
                 Row{u"", u"", true},
                 Row{u"Note.TXT", u"note.txt", true},
                 Row{u"café", u"CAFE\u0301", true},
                 Row{u"café", u"cafe", true},
                 Row{u"Ａｂ１", u"ab1", true},
                 Row{u"ｶﾞ", u"ガ", true},
                 Row{u"straße", u"STRASSE", true},
                 Row{u"øre", u"ore", false},
                 Row{u"I", u"i", true},
                 Row{u"ı", u"i", false},
                 Row{u"İ", u"i", true},
                 Row{u"ﬁ", u"fi", true},
                 Row{u"a", u"ab", false},
                 Row{u"कि", u"के", false},
                 Row{u"กิน", u"กน", false},
                 Row{u"שָׁלוֹם", u"שלום", true},
                 Row{u"👩\u200D👧", u"👩👧", false},
                 Row{u"\U00010400", u"\U00010428", true},
             })
            EXPECT_EQ(equalAsFilenames(row.a, row.b), row.equal) << utf8FromUTF16(row.a) << " " << utf8FromUTF16(row.b);
    }
}

TEST(TextFolding, CaseAloneKeepsMarksAndComparesCanonically) {
    EXPECT_TRUE(equalIgnoringCase(u"MARKDOWN", u"markdown"));
    EXPECT_TRUE(equalIgnoringCase(u"É", u"e\u0301"));
    EXPECT_TRUE(equalIgnoringCase(u"a\u0316\u0301", u"A\u0301\u0316"));
    EXPECT_FALSE(equalIgnoringCase(u"é", u"e"));
    EXPECT_FALSE(equalIgnoringCase(u"Ａ", u"a"));
}

TEST(TextFolding, LoneSurrogatesStay) {
    const std::u16string lone{0xDC00, u'A', 0xD800, 0xD800, 0xDFFF, 0xDBFF};
    const std::u16string folded{0xDC00, u'a', 0xD800, 0xD800, 0xDFFF, 0xDBFF};
    EXPECT_EQ(foldedText(lone, {.ignoreCase = true, .ignoreDiacritics = true, .ignoreWidth = true}), folded);
}

struct SearchRow {
    std::u16string_view text, searched;
    std::vector<Range> expected;
};

std::vector<Range> allMatches(std::u16string_view text, std::u16string_view searched) {
    LocalizedSearch search(text, searched);
    std::vector<Range> ranges;
    while (const auto range = search.next()) ranges.push_back(*range);
    return ranges;
}

void expectMatches(std::initializer_list<SearchRow> rows) {
    for (const SearchRow& row : rows)
        EXPECT_EQ(allMatches(row.text, row.searched), row.expected)
            << utf8FromUTF16(row.text) << " / " << utf8FromUTF16(row.searched);
}

TEST(LocalizedSearch, MatchesHaveTheirLengthInTheText) {
    expectMatches({
        {u"Cafe\u0301 CAFÉ cafe", u"café", {{0, 5}, {6, 4}, {11, 4}}},
        {u"Straße", u"ss", {{4, 1}}},
        {u"Straße", u"s", {{0, 1}}},
        {u"aaaa", u"aa", {{0, 2}, {2, 2}}},
        {u"aabaabaab", u"aabaab", {{0, 6}}},
        {u"xaabaaab", u"aaab", {{4, 4}}},
        {u"\u0301a", u"a", {{1, 1}}},
        {u"ab", u"", {}},
        {u"ab", u"\u0301", {}},
        {u"", u"a", {}},
        {u"søk", u"sok", {}},
        {u"a👩\u200D👧b", u"👧", {{4, 2}}},
        {u"שלום עולם", u"עולם", {{5, 4}}},
    });
    EXPECT_EQ(allMatches(std::u16string{0xD83D, u'a', 0xDE00}, std::u16string{0xDE00}), (std::vector<Range>{{2, 1}}));
    EXPECT_EQ(allMatches(u"\U0001F600", std::u16string{0xDE00}), std::vector<Range>{});
}

TEST(LocalizedSearch, DotlessIIsALetterOfItsOwnInTurkish) {
    ScopedEnvironment environment;
    for (const char* locale : kLocales) {
        environment->localeIdentifier = locale;
        if (std::string_view(locale) == "tr_TR") {
            expectMatches({{u"ISI", u"ı", {{0, 1}, {2, 1}}}, {u"ISI", u"i", {}}, {u"İz", u"i", {{0, 1}}}});
        } else {
            expectMatches({{u"ISI", u"ı", {}}, {u"ISI", u"i", {{0, 1}, {2, 1}}}, {u"İz", u"i", {{0, 1}}}});
        }
    }
}

TEST(LocalizedSearch, PrefixIsAMatchAtTheStart) {
    EXPECT_TRUE(localizedStandardHasPrefix(u"E\u0301cole", u"éc"));
    EXPECT_TRUE(localizedStandardHasPrefix(u"ß", u"SS"));
    for (const auto& [text, prefix] : std::initializer_list<std::pair<std::u16string_view, std::u16string_view>>{
             {u"ß", u"s"}, {u"abc", u"bc"}, {u"abc", u""}, {u"", u"a"}, {u"", u""}, {u"\u0301a", u"a"}, {u"a", u"ab"}})
        EXPECT_FALSE(localizedStandardHasPrefix(text, prefix));
}

TEST(LocalizedSearch, PrefixAndSearchAgree) {
    EXPECT_TRUE(rc::check([] {
        const auto letters = rc::gen::container<std::u16string>(
            rc::gen::element<char16_t>(u'a', u'A', u'b', u'é', 0x0301, u'ß', u's', 0xD83D, 0xDE00));
        const std::u16string text = *letters;
        const std::u16string prefix = *letters;
        const auto first = LocalizedSearch(text, prefix).next();
        RC_ASSERT(localizedStandardHasPrefix(text, prefix) == (first && first->location == 0));
    }));
}

} // namespace
} // namespace platform
