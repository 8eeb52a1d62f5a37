#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "platform/base/UTF16.h"
#include "platform/foundation/DateFormatter.h"
#include "platform/foundation/DateStyles.h"
#include "platform/foundation/Environment.h"

namespace platform {
namespace {

// The C library's zone for a scope.
class ScopedTZ {
  public:
    explicit ScopedTZ(const char* value) {
        if (const char* before = std::getenv("TZ")) saved_ = before;
        set(value);
    }
    ~ScopedTZ() { set(saved_ ? saved_->c_str() : nullptr); }
    ScopedTZ(const ScopedTZ&) = delete;
    ScopedTZ& operator=(const ScopedTZ&) = delete;

  private:
    static void set(const char* value) {
        if (value)
            ::setenv("TZ", value, 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    std::optional<std::string> saved_;
};

std::tm partsOfTheCLibrary(std::time_t moment) {
    std::tm parts{};
    ::localtime_r(&moment, &parts);
    return parts;
}

// Whether both have the same local time; says where not.
bool agrees(std::time_t moment) {
    const std::tm parts = partsOfTheCLibrary(moment);
    char text[32];
    const std::string theirs(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts));
    const std::string ours = utf8FromUTF16(isoLocalDateAndTime(Date::fromUnixTime(static_cast<double>(moment))));
    EXPECT_EQ(ours, theirs) << Environment::current().timeZoneName;
    return ours == theirs;
}

TEST(TimeZone, RulesReadAsTheCLibraryReadsThem) {
    constexpr std::time_t kNewYear2023 = 1672531200, kNewYear2027 = 1798761600, kDay = 86400, kTenMinutes = 600;
    ScopedEnvironment environment;
    for (const char* zone : {
             "UTC",
             "Europe/Berlin",
             "EST5EDT",
             "UTC0",
             "GMT+3",
             "GMT-3",
             "ABC-5:45",
             "CET-1CEST,M3.5.0,M10.5.0/3",
             "AEST-10AEDT,M10.1.0,M4.1.0/3",         // the year begins in summer
             "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", // half an hour
             "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",      // before midnight
             "IST-2IDT,M3.4.4/26,M10.5.0",           // the day after
             "XXX3:30:15YYY,J60/2,J300/2:30",
             "no such zone",
             "AB3",
             "<X3",
             "CET-1CEST,M13.5.0,M10.5.0",
         }) {
        const ScopedTZ libraryZone(zone);
        environment->timeZoneName = zone;
        bool same = true;
        for (std::time_t day = kNewYear2023; day < kNewYear2027 && same; day += kDay) {
            const bool changes = partsOfTheCLibrary(day).tm_gmtoff != partsOfTheCLibrary(day + kDay).tm_gmtoff;
            for (std::time_t moment = day; moment < day + kDay && same; moment += changes ? kTenMinutes : kDay)
                same = agrees(moment);
        }
    }
}

// Where a rule names no days, the C library takes those of a file that some systems have.
TEST(TimeZone, SummerTimeWithoutDaysHasTheUsualOnes) {
    ScopedEnvironment environment;
    environment->timeZoneName = "CET-1CEST";
    EXPECT_EQ(isoLocalDateAndTime(Date::fromUnixTime(1714554902)), u"2024-05-01T11:15:02");
    EXPECT_EQ(isoLocalDateAndTime(Date::fromUnixTime(1704067200)), u"2024-01-01T01:00:00");
}

TEST(TimeZone, RulesServeReadingAndStyles) {
    ScopedEnvironment environment;
    environment->localeIdentifier = "de_DE";
    environment->timeZoneName = "CET-1CEST,M3.5.0,M10.5.0/3";
    const std::optional<Date> read = DateFormatter("YYYYMMdd'T'HHmmss'Z'").dateFromString("20240501T111502Z");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->unixTime(), 1714554902);
    EXPECT_EQ(localizedDateAndTime(*read, DateFormatterStyle::none, DateFormatterStyle::medium), u"11:15:02");
}

} // namespace
} // namespace platform
