#include <gtest/gtest.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Capitalization.h"
#include "platform/foundation/DateStyles.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/LocalizedCompare.h"
#include "platform/foundation/RegularExpression.h"

namespace platform {
namespace {

constexpr Date kMorning = Date::fromUnixTime(1714554902); // 2024-05-01 09:15:02 UTC

TEST(Capitalization, FollowsTheLocale) {
    struct Row {
        const char* locale;
        std::u16string_view input, expected;
    };
    ScopedEnvironment environment;
    for (const Row& row : {
             Row{"en_US", u"mother-in-law", u"Mother-In-Law"},
             Row{"en_US", u"istanbul", u"Istanbul"},
             Row{"tr_TR", u"istanbul", u"İstanbul"},
             Row{"nl_NL", u"ijsland", u"IJsland"},
             Row{"de_DE", u"ßa ΑΣ", u"Ssa Ας"},
             Row{"ja_JP", u"日本 x", u"日本 X"},
             Row{"en_US_POSIX", u"", u""},
         }) {
        environment->localeIdentifier = row.locale;
        EXPECT_EQ(localizedCapitalized(row.input), row.expected) << row.locale;
    }
    const std::u16string lone{u'a', 0xD800, u' ', 0xDC00, u'b'};
    EXPECT_EQ(localizedCapitalized(lone).size(), lone.size());
}

TEST(LocalizedCompare, OrdersAsAFileManager) {
    ScopedEnvironment environment;
    for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP"}) {
        environment->localeIdentifier = locale;
        EXPECT_TRUE(localizedStandardCompare(u"Note 2", u"Note 10") < 0) << locale;
        EXPECT_TRUE(localizedStandardCompare(u"1.9", u"1.10") < 0);
        EXPECT_TRUE(localizedStandardCompare(u"", u"a") < 0);
        EXPECT_TRUE(localizedStandardCompare(u"note", u"NOTE") == 0) << locale;
        EXPECT_TRUE(localizedStandardCompare(u"café", u"cafe") > 0);
    }
    environment->localeIdentifier = "de_DE";
    EXPECT_TRUE(localizedStandardCompare(u"Äpfel", u"Zebra") < 0);
    environment->localeIdentifier = "sv_SE";
    EXPECT_TRUE(localizedStandardCompare(u"Äpple", u"Zebra") > 0);
}

TEST(DateStyles, FollowLocaleAndZone) {
    using enum DateFormatterStyle;
    struct Row {
        const char *locale, *zone;
        DateFormatterStyle date, time;
        std::u16string_view expected;
    };
    ScopedEnvironment environment;
    for (const Row& row : {
             Row{"en_US", "UTC", medium, shortStyle, u"May 1, 2024, 9:15\u202FAM"},
             Row{"en_US", "America/New_York", none, shortStyle, u"5:15\u202FAM"},
             Row{"en_US", "UTC", shortStyle, none, u"5/1/24"},
             Row{"en_US", "UTC", full, none, u"Wednesday, May 1, 2024"},
             Row{"en_US", "UTC", longStyle, none, u"May 1, 2024"},
             Row{"de_DE", "Europe/Berlin", medium, medium, u"01.05.2024, 11:15:02"},
             Row{"de_DE", "Europe/Berlin", longStyle, none, u"1. Mai 2024"},
             Row{"tr_TR", "Europe/Istanbul", medium, shortStyle, u"1 May 2024 12:15"},
             Row{"ja_JP", "Asia/Tokyo", longStyle, shortStyle, u"2024年5月1日 18:15"},
             Row{"en_US", "UTC", none, none, u""},
             Row{"en_US", "UTC", static_cast<DateFormatterStyle>(77), none, u""},
         }) {
        environment->localeIdentifier = row.locale;
        environment->timeZoneName = row.zone;
        EXPECT_EQ(utf8FromUTF16(localizedDateAndTime(kMorning, row.date, row.time)), utf8FromUTF16(row.expected))
            << row.locale;
    }
}

TEST(DateStyles, ISOFormsAreLocalTimeInEveryLocale) {
    ScopedEnvironment environment;
    for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP", "th_TH", "ar_EG"}) {
        environment->localeIdentifier = locale;
        environment->timeZoneName = "Asia/Kolkata";
        EXPECT_EQ(isoLocalDateAndTime(kMorning), u"2024-05-01T14:45:02");
        EXPECT_EQ(isoLocalDate(kMorning), u"2024-05-01");
        EXPECT_EQ(isoLocalTime(kMorning), u"14:45:02");
        environment->timeZoneName = "Pacific/Kiritimati";
        EXPECT_EQ(isoLocalDateAndTime(Date::fromUnixTime(1704030000)), u"2024-01-01T03:40:00");
    }
}

TEST(RegularExpression, FindsMatchesAndGroups) {
    const auto pattern = RegularExpression::withPattern(u"(a)|(b+)");
    ASSERT_TRUE(pattern);
    const auto matches = pattern->matches(u"xabb\U0001F600b");
    ASSERT_TRUE(matches);
    ASSERT_EQ(matches->size(), 3u);
    EXPECT_EQ((*matches)[0].groups, (std::vector<Range>{{1, 1}, {1, 1}, {kNotFound, 0}}));
    EXPECT_EQ((*matches)[1].range(), (Range{2, 2}));
    EXPECT_EQ((*matches)[2].range(), (Range{6, 1}));
    EXPECT_EQ(*pattern->replacingMatches(u"xabbya", u"$1"), u"x$1$1y$1");
    EXPECT_FALSE(*pattern->matchesAtStart(u"xa"));
    EXPECT_TRUE(*pattern->matchesAtStart(u"ax"));
    EXPECT_TRUE(pattern->matches(u"")->empty());
}

TEST(RegularExpression, OptionsChangeWhatMatches) {
    using enum RegularExpressionOption;
    struct Row {
        std::u16string_view pattern, text;
        RegularExpressionOption option;
    };
    for (const Row& row : {Row{u"A", u"a", caseInsensitive}, Row{u"^b", u"a\nb", anchorsMatchLines},
                           Row{u"a.b", u"a\nb", dotMatchesNewlines}}) {
        EXPECT_TRUE(RegularExpression::withPattern(row.pattern)->matches(row.text)->empty());
        EXPECT_EQ(RegularExpression::withPattern(row.pattern, row.option)->matches(row.text)->size(), 1u);
    }
}

TEST(RegularExpression, BadPatternNamesItsPlace) {
    const auto pattern = RegularExpression::withPattern(u"a(b");
    ASSERT_FALSE(pattern);
    EXPECT_EQ(pattern.error().localizedDescription(), "bad pattern at line 1, unit 3: U_REGEX_MISMATCHED_PAREN");
}

TEST(RegularExpression, RunawayPatternEndsInAnError) {
    const auto pattern = RegularExpression::withPattern(u"(a+)+$", RegularExpressionOption::none);
    const std::u16string text = std::u16string(64, u'a') + u'b';
    const auto matches = pattern->withTimeLimit(20).matches(text);
    ASSERT_FALSE(matches);
    EXPECT_EQ(matches.error().domain, kRegularExpressionErrorDomain);
}

} // namespace
} // namespace platform
