#include "platform/base/Date.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <fmt/compile.h>

namespace platform {

namespace {

struct CivilTime {
    int year;
    unsigned month, day;
    long hours, minutes, seconds;
};

// Moments further than some 30,000 years away are clamped: <chrono> counts years in 16 bits.
CivilTime civilTime(const Date& date) {
    using namespace std::chrono;
    constexpr double kLimit = 9.0e11;
    const double seconds = std::isnan(date.unixTime()) ? 0 : std::clamp(date.unixTime(), -kLimit, kLimit);
    const auto moment = sys_seconds{std::chrono::seconds{static_cast<long long>(std::floor(seconds))}};
    const auto day = floor<days>(moment);
    const year_month_day ymd{day};
    const hh_mm_ss time{moment - day};
    return {static_cast<int>(ymd.year()),     static_cast<unsigned>(ymd.month()),
            static_cast<unsigned>(ymd.day()), time.hours().count(),
            time.minutes().count(),           static_cast<long>(time.seconds().count())};
}

} // namespace

std::string Date::description() const {
    const CivilTime t = civilTime(*this);
    return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000"), t.year, t.month, t.day, t.hours,
                       t.minutes, t.seconds);
}

std::string Date::iso8601() const {
    const CivilTime t = civilTime(*this);
    return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z"), t.year, t.month, t.day, t.hours, t.minutes,
                       t.seconds);
}

} // namespace platform
