// Counterpart of NSDate: a moment, without a calendar.
#pragma once

#include <compare>
#include <string>

namespace platform {

struct Date {
    // Seconds since 2001-01-01 00:00:00 UTC, the zero of archives and property lists; fractions allowed.
    double secondsSinceReferenceDate = 0;

    static constexpr double kReferenceDateInUnixTime = 978307200;

    static constexpr Date fromUnixTime(double seconds) { return Date{seconds - kReferenceDateInUnixTime}; }
    constexpr double unixTime() const { return secondsSinceReferenceDate + kReferenceDateInUnixTime; }

    // "2024-05-01 09:15:02 +0000": always in UTC, fractions of a second cut off. Years outside 0001 to 9999 keep
    // their digits.
    std::string description() const;

    // "2024-05-01T09:15:02Z": ISO 8601 in UTC, whole seconds.
    std::string iso8601() const;

    friend constexpr auto operator<=>(const Date&, const Date&) = default;
};

} // namespace platform
