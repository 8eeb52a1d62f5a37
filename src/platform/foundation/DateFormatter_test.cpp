#include "platform/foundation/DateFormatter.h"

#include <chrono>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"

namespace platform {
namespace {

constexpr std::string_view kPattern = "YYYYMMdd'T'HHmmss'Z'";
// The same fields and a quote at the end, which leaves the quick way out.
constexpr std::string_view kSlowPattern = "YYYYMMdd'T'HHmmss'Z'''";

std::string described(const DateFormatter& formatter, std::string_view text) {
    const std::optional<Date> date = formatter.dateFromString(text);
    EXPECT_EQ(formatter.dateFromString(utf16FromUTF8(text)), date);
    return date ? date->description().substr(0, 19) : "unreadable";
}

TEST(DateFormatter, ReadsWallTimeInTheEnvironmentsZone) {
    struct Row {
        const char *text, *utc, *newYork;
    };
    for (const Row& row : {
             Row{"20240501T091502Z", "2024-05-01 09:15:02", "2024-05-01 13:15:02"},
             Row{"20240101T000000Z", "2024-01-01 00:00:00", "2024-01-01 05:00:00"},
             Row{"20231231T235959Z", "2023-12-31 23:59:59", "2024-01-01 04:59:59"},
             Row{"20241230T120000Z", "2024-12-30 12:00:00", "2024-12-30 17:00:00"},
             Row{"18500101T000000Z", "1850-01-01 00:00:00", "1850-01-01 04:56:02"},
             Row{"20240310T023000Z", "2024-03-10 02:30:00", "unreadable"},          // the clocks skip it
             Row{"20241103T013000Z", "2024-11-03 01:30:00", "2024-11-03 06:30:00"}, // occurs twice
         }) {
        ScopedEnvironment environment;
        for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ar_EG", "ar_SA", "fa_IR", "th_TH",
                                   "ja_JP@calendar=japanese"}) {
            environment->localeIdentifier = locale;
            environment->timeZoneName = "UTC";
            EXPECT_EQ(described(DateFormatter(kPattern), row.text), row.utc) << row.text;
            environment->timeZoneName = "America/New_York";
            EXPECT_EQ(described(DateFormatter(kPattern), row.text), row.newYork) << row.text;
        }
    }
}

TEST(DateFormatter, RefusesWhatDoesNotMatchAsAWhole) {
    ScopedEnvironment environment;
    environment->timeZoneName = "UTC";
    environment->localeIdentifier = "en_US";
    const DateFormatter formatter(kPattern);
    for (const char* text :
         {"", "20240501T091502", "20240501T091502Zx", " 20240501T091502Z", "20240501T091502Z ", "20241301T000000Z",
          "20240230T000000Z", "20240501T240000Z", "20240501T006000Z", "20240501T000060Z", "20240501 091502Z",
          "2024-05-01T09:15:02Z", "20240501", "x", "20240501T0915Z", "20240501t091502Z", "２０２４"})
        EXPECT_EQ(described(formatter, text), "unreadable") << text;
}

TEST(DateFormatter, ReadsOtherPatterns) {
    ScopedEnvironment environment;
    environment->timeZoneName = "Europe/Berlin";
    environment->localeIdentifier = "de_DE";
    EXPECT_EQ(described(DateFormatter("d. MMMM yyyy HH:mm"), "1. Mai 2024 09:15"), "2024-05-01 07:15:00");
    EXPECT_EQ(described(DateFormatter("yyyy-MM-dd"), "2024-05-01"), "2024-04-30 22:00:00");
}

TEST(DateFormatter, ReadsTimeStampsByHandAsTheLibraryDoes) {
    const std::vector<std::string> locales{
        "en_US_POSIX", "en_US", "de_DE", "ar_EG", "he_IL", "fa_IR", "th_TH", "sv_SE", "ja_JP@calendar=japanese"};
    const std::vector<std::string> zones{
        "UTC",          "America/New_York",    "Europe/Berlin", "Asia/Kolkata", "Africa/Monrovia",
        "Pacific/Apia", "Australia/Lord_Howe", "no such zone"};
    EXPECT_TRUE(rc::check([&] {
        ScopedEnvironment environment;
        environment->localeIdentifier = *rc::gen::elementOf(locales);
        environment->timeZoneName = *rc::gen::elementOf(zones);
        const DateFormatter quick(kPattern), slow(kSlowPattern);
        for (int i = 0; i < 100; ++i) {
            std::string text = fmt::format("{:04}{:02}{:02}T{:02}{:02}{:02}Z", *rc::gen::inRange(1850, 2250),
                                           *rc::gen::inRange(0, 14), *rc::gen::inRange(0, 33), *rc::gen::inRange(0, 26),
                                           *rc::gen::inRange(0, 62), *rc::gen::inRange(0, 62));
            if (*rc::gen::inRange(0, 10) == 0)
                text[*rc::gen::inRange<std::size_t>(0, 16)] = *rc::gen::elementOf(std::string(" -TZ19"));
            RC_ASSERT(quick.dateFromString(text) == slow.dateFromString(text + "'"));
        }
    }));
}

TEST(DateFormatter, EveryThirdDayOfThisCenturyReadsTheSameBothWays) {
    ScopedEnvironment environment;
    environment->timeZoneName = "Europe/Berlin";
    environment->localeIdentifier = "de_DE";
    const DateFormatter quick(kPattern), slow(kSlowPattern);
    using namespace std::chrono;
    for (sys_days day = sys_days(2000y / January / 1); day < sys_days(2040y / January / 1); day += days{3}) {
        const year_month_day date(day);
        const std::string text = fmt::format("{:04}{:02}{:02}T023000Z", static_cast<int>(date.year()),
                                             static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
        ASSERT_EQ(quick.dateFromString(text), slow.dateFromString(text + "'")) << text;
    }
}

} // namespace
} // namespace platform
