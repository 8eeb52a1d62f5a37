// A POSIX rule is "std offset[dst[offset][,start[/time],end[/time]]]", offsets being what is to be added for UTC: west
// of Greenwich is positive. It becomes a zone of two yearly rules, which hold for all years, for a rule knows no
// history.
#include "platform/foundation/TimeZone.h"

#include <array>
#include <charconv>
#include <optional>
#include <string>

#include <unicode/rbtz.h>
#include <unicode/simpletz.h>
#include <unicode/tzrule.h>

#include "platform/foundation/Environment.h"

namespace platform {

namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr int kSecondsPerHour = 3600;
constexpr int kMostOffsetHours = 24;
constexpr int kFirstYear = 1800; // before it, standard time
constexpr std::string_view kUsualChanges = ",M3.2.0,M11.1.0";

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Reads a rule from left to right. A call that reads nothing leaves the position where it was.
class RuleReader {
  public:
    explicit RuleReader(std::string_view text) : rest_(text) {}

    bool isAtEnd() const { return rest_.empty(); }
    bool isAt(char c) const { return rest_.starts_with(c); }

    bool take(char c) {
        if (!isAt(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    // Three letters or more, or anything in angle brackets.
    bool takeName() {
        std::size_t length = 0;
        if (isAt('<')) {
            length = rest_.find('>') + 1; // 0 without one
        } else {
            while (length < rest_.size() && isLetter(rest_[length])) ++length;
            if (length < 3) return false;
        }
        rest_.remove_prefix(length);
        return length > 0;
    }

    std::optional<int> takeNumber(int smallest, int largest) {
        int number = 0;
        if (rest_.empty() || rest_.front() < '0' || rest_.front() > '9') return std::nullopt;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        if (error != std::errc() || number < smallest || number > largest) return std::nullopt;
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return number;
    }

    // Seconds: "[+-]hours[:minutes[:seconds]]".
    std::optional<int> takeTime(int mostHours) {
        const bool isNegative = take('-');
        if (!isNegative) take('+');
        const std::optional<int> hours = takeNumber(0, mostHours);
        if (!hours) return std::nullopt;
        int seconds = *hours * kSecondsPerHour;
        for (int unit = kSecondsPerHour / 60; unit > 0 && take(':'); unit /= 60) {
            const std::optional<int> count = takeNumber(0, 59);
            if (!count) return std::nullopt;
            seconds += *count * unit;
        }
        return isNegative ? -seconds : seconds;
    }

  private:
    std::string_view rest_;
};

// The month from 0 and the day of it, for a day from 1 of a year without a leap day.
std::pair<int, int> monthAndDay(int dayOfYear) {
    constexpr std::array kLengths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int month = 0;
    for (; dayOfYear > kLengths[static_cast<std::size_t>(month)]; ++month)
        dayOfYear -= kLengths[static_cast<std::size_t>(month)];
    return {month, dayOfYear};
}

// The day of a change, in wall time: "M3.5.0/2" is the last Sunday of March at two, "J60" the first of March, "59" the
// sixtieth day of the year, which is taken as of a common year.
std::optional<icu::DateTimeRule> takeChange(RuleReader& reader) {
    constexpr int kUsualTime = 2 * kSecondsPerHour, kMostHours = 167, kLastWeek = 5;
    std::optional<int> month, week, weekday, day;
    if (reader.take('M')) {
        month = reader.takeNumber(1, 12);
        week = month && reader.take('.') ? reader.takeNumber(1, kLastWeek) : std::nullopt;
        weekday = week && reader.take('.') ? reader.takeNumber(0, 6) : std::nullopt;
        if (!weekday) return std::nullopt;
    } else {
        const bool isCountedFromOne = reader.take('J');
        day = isCountedFromOne ? reader.takeNumber(1, 365) : reader.takeNumber(0, 364);
        if (!day) return std::nullopt;
        day = *day + (isCountedFromOne ? 0 : 1);
    }
    const std::optional<int> time = reader.take('/') ? reader.takeTime(kMostHours) : kUsualTime;
    if (!time) return std::nullopt;
    const int milliseconds = *time * kMillisecondsPerSecond;
    if (day) {
        const auto [dayMonth, dayOfMonth] = monthAndDay(*day);
        return icu::DateTimeRule(dayMonth, dayOfMonth, milliseconds, icu::DateTimeRule::WALL_TIME);
    }
    return icu::DateTimeRule(*month - 1, *week == kLastWeek ? -1 : *week, *weekday + UCAL_SUNDAY, milliseconds,
                             icu::DateTimeRule::WALL_TIME);
}

// What of a rule follows standard time.
struct SummerTime {
    int saved = kSecondsPerHour * kMillisecondsPerSecond;
    std::optional<std::pair<icu::DateTimeRule, icu::DateTimeRule>> changes; // to summer time and back
};

// `offset` is that of standard time.
std::optional<SummerTime> takeSummerTime(RuleReader& reader, int offset) {
    SummerTime summer;
    if (!reader.takeName()) return std::nullopt;
    if (!reader.isAtEnd() && !reader.isAt(',')) {
        const std::optional<int> west = reader.takeTime(kMostOffsetHours);
        if (!west) return std::nullopt;
        summer.saved = -*west * kMillisecondsPerSecond - offset;
    }
    if (reader.isAtEnd()) reader = RuleReader(kUsualChanges);
    const auto start = reader.take(',') ? takeChange(reader) : std::nullopt;
    const auto end = start && reader.take(',') ? takeChange(reader) : std::nullopt;
    if (!end || !reader.isAtEnd()) return std::nullopt;
    summer.changes.emplace(*start, *end);
    return summer;
}

// Null for a text that is no rule. One whose summer time cannot be read has standard time all the year.
std::unique_ptr<icu::TimeZone> timeZoneOfRule(std::string_view text) {
    RuleReader reader(text);
    const std::optional<int> west = reader.takeName() ? reader.takeTime(kMostOffsetHours) : std::nullopt;
    if (!west) return nullptr;
    const icu::UnicodeString name = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    const int offset = -*west * kMillisecondsPerSecond;
    const std::optional<SummerTime> summer = takeSummerTime(reader, offset);
    if (!summer || !summer->changes) return std::make_unique<icu::SimpleTimeZone>(offset, name);

    auto zone = std::make_unique<icu::RuleBasedTimeZone>(name, new icu::InitialTimeZoneRule(name, offset, 0));
    UErrorCode status = U_ZERO_ERROR;
    for (const auto& [change, saved] :
         {std::pair(summer->changes->first, summer->saved), std::pair(summer->changes->second, 0)})
        zone->addTransitionRule(
            new icu::AnnualTimeZoneRule(name, offset, saved, change, kFirstYear, icu::AnnualTimeZoneRule::MAX_YEAR),
            status);
    zone->complete(status);
    if (U_FAILURE(status)) return nullptr;
    return zone;
}

} // namespace

std::unique_ptr<icu::TimeZone> timeZoneNamed(std::string_view name) {
    const icu::UnicodeString id = icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())});
    UErrorCode status = U_ZERO_ERROR;
    UBool isInDatabase = false;
    icu::UnicodeString canonical;
    icu::TimeZone::getCanonicalID(id, canonical, isInDatabase, status);
    // "GMT+3" is east to the library and west to POSIX: what is not in the database is a rule first.
    if (U_SUCCESS(status) && isInDatabase) return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(id));
    if (auto zone = timeZoneOfRule(name)) return zone;
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::getGMT()->clone());
}

std::unique_ptr<icu::TimeZone> environmentTimeZone() {
    return timeZoneNamed(Environment::current().timeZoneName);
}

} // namespace platform
