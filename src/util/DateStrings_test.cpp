#include "util/DateStrings.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/Environment.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using enum platform::DateFormatterStyle;

class DateStrings : public testing::Test {
  protected:
    DateStrings() {
        environment_->now = [] { return platform::Date::fromUnixTime(1714554902.75); };
        environment_->timeZoneName = "UTC";
        environment_->localeIdentifier = "de_DE";
        environment_->catalogueDirectory = "/nonexistent";
    }
    platform::ScopedEnvironment environment_;
};

TEST_F(DateStrings, StoredStylesAreTakenAsTheyAreOrFallBack) {
    struct Row {
        DateFormatPreferences preferences;
        std::u16string_view both, date, time;
    };
    for (const Row& row : {
             Row{{}, u"", u"01.05.2024", u"09:15"},
             Row{{longStyle, none, false}, u"1. Mai 2024", u"1. Mai 2024", u"09:15"},
             Row{{none, medium, false}, u"09:15:02", u"01.05.2024", u"09:15:02"},
             Row{{shortStyle, shortStyle, false}, u"01.05.24, 09:15", u"01.05.24", u"09:15"},
             Row{{longStyle, longStyle, true}, u"2024-05-01T09:15:02", u"2024-05-01", u"09:15:02"},
         }) {
        EXPECT_EQ(dateAndTimeStringForTextView(row.preferences), row.both);
        EXPECT_EQ(dateStringForTextView(row.preferences), row.date);
        EXPECT_EQ(timeStringForTextView(row.preferences), row.time);
    }
}

TEST_F(DateStrings, PreferencesComeFromTheUserDefaults) {
    const tests::ScratchDirectory scratch;
    environment_->preferencesDirectory = scratch.path().string();
    auto& defaults = platform::UserDefaults::standard();
    EXPECT_EQ(dateAndTimeStringForTextView(), u"");
    EXPECT_EQ(dateStringForTextView(), u"01.05.2024");
    EXPECT_EQ(timeStringForTextView(), u"09:15");
    ASSERT_TRUE(defaults.setObject(QLTTextDateFormatStyleKey, 3));
    ASSERT_TRUE(defaults.setObject(QLTTextTimeFormatStyleKey, 99));
    EXPECT_EQ(dateAndTimeStringForTextView(), u"1. Mai 2024");
    EXPECT_EQ(dateStringForTextView(), u"1. Mai 2024");
    ASSERT_TRUE(defaults.setObject(QLTUseISODateFormatsKey, true));
    EXPECT_EQ(dateAndTimeStringForTextView(), u"2024-05-01T09:15:02");
    EXPECT_EQ(timeStringForTextView(), u"09:15:02");
}

TEST_F(DateStrings, DefaultsAreMediumDatesAndShortTimes) {
    const platform::Dictionary expected{{"QLTTextDateFormatStyle", 2}, {"QLTTextTimeFormatStyle", 1}};
    EXPECT_EQ(defaultDateFormatPreferences(), expected);
}

TEST_F(DateStrings, ISOFormIsLocalTime) {
    environment_->timeZoneName = "America/New_York";
    EXPECT_EQ(dateAndTimeStringInISOFormat(), u"2024-05-01T05:15:02");
    EXPECT_EQ(dateAndTimeStringForDateStyle(none, medium), u"05:15:02");
}

TEST_F(DateStrings, CountdownNamesTheLargestUnit) {
    struct Row {
        double seconds;
        std::u16string_view expected;
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP"}) {
        environment_->localeIdentifier = locale;
        for (const Row& row : {
                 Row{0, u"0 seconds remaining"},
                 Row{0.2, u"1 second remaining"},
                 Row{1, u"1 second remaining"},
                 Row{1.1, u"2 seconds remaining"},
                 Row{59.5, u"60 seconds remaining"},
                 Row{60, u"1 minute remaining"},
                 Row{119.9, u"1 minute remaining"},
                 Row{120, u"2 minutes remaining"},
                 Row{3599, u"59 minutes remaining"},
                 Row{3600, u"1 hour remaining"},
                 Row{5400, u"1 hour remaining"},
                 Row{7200, u"2 hours remaining"},
                 Row{86400, u"1 day remaining"},
                 Row{172800, u"2 days remaining"},
                 Row{-5.5, u"-5 seconds remaining"},
                 Row{kInfinity, u"9223372036854775807 days remaining"},
                 Row{std::numeric_limits<double>::quiet_NaN(), u"0 seconds remaining"},
             })
            EXPECT_EQ(stringForTimeInterval(row.seconds), row.expected) << row.seconds;
    }
}

} // namespace
} // namespace quillet
