#include "util/DateStrings.h"

#include <cmath>
#include <limits>

#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/StringTable.h"

namespace quillet {

using platform::DateFormatterStyle;
using platform::localizable;

namespace {

constexpr DateFormatterStyle kDefaultDateStyle = DateFormatterStyle::medium;
constexpr DateFormatterStyle kDefaultTimeStyle = DateFormatterStyle::shortStyle;

platform::Date now() {
    return platform::Environment::current().now();
}

struct CountdownUnit {
    double seconds;
    std::string_view one, many;
};

// Largest first.
constexpr CountdownUnit kCountdownUnits[] = {
    {86400, localizable("%ld day remaining"), localizable("%ld days remaining")},
    {3600, localizable("%ld hour remaining"), localizable("%ld hours remaining")},
    {60, localizable("%ld minute remaining"), localizable("%ld minutes remaining")},
};
constexpr CountdownUnit kSecondsUnit = {1, localizable("%ld second remaining"), localizable("%ld seconds remaining")};

std::int64_t integerFrom(double value) {
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (std::isnan(value)) return 0;
    if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
    if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

std::u16string countdownText(std::int64_t count, const CountdownUnit& unit) {
    const std::string format = platform::localizedString(count == 1 ? unit.one : unit.many);
    return platform::utf16FromUTF8(platform::formatted(format, {count}));
}

} // namespace

platform::Dictionary defaultDateFormatPreferences() {
    return {{std::string(QLTTextDateFormatStyleKey), static_cast<std::int64_t>(kDefaultDateStyle)},
            {std::string(QLTTextTimeFormatStyleKey), static_cast<std::int64_t>(kDefaultTimeStyle)}};
}

DateFormatPreferences storedDateFormatPreferences() {
    const platform::UserDefaults& defaults = platform::UserDefaults::standard();
    return {static_cast<DateFormatterStyle>(defaults.integerForKey(QLTTextDateFormatStyleKey)),
            static_cast<DateFormatterStyle>(defaults.integerForKey(QLTTextTimeFormatStyleKey)),
            defaults.boolForKey(QLTUseISODateFormatsKey)};
}

std::u16string dateAndTimeStringForDateStyle(DateFormatterStyle dateStyle, DateFormatterStyle timeStyle) {
    return platform::localizedDateAndTime(now(), dateStyle, timeStyle);
}

std::u16string dateAndTimeStringInISOFormat() {
    return platform::isoLocalDateAndTime(now());
}

std::u16string dateAndTimeStringForTextView(const DateFormatPreferences& preferences) {
    if (preferences.useISODateFormats) return dateAndTimeStringInISOFormat();
    return dateAndTimeStringForDateStyle(preferences.dateStyle, preferences.timeStyle);
}

std::u16string dateStringForTextView(const DateFormatPreferences& preferences) {
    if (preferences.useISODateFormats) return platform::isoLocalDate(now());
    const bool stored = preferences.dateStyle != DateFormatterStyle::none;
    return dateAndTimeStringForDateStyle(stored ? preferences.dateStyle : kDefaultDateStyle, DateFormatterStyle::none);
}

std::u16string timeStringForTextView(const DateFormatPreferences& preferences) {
    if (preferences.useISODateFormats) return platform::isoLocalTime(now());
    const bool stored = preferences.timeStyle != DateFormatterStyle::none;
    return dateAndTimeStringForDateStyle(DateFormatterStyle::none, stored ? preferences.timeStyle : kDefaultTimeStyle);
}

std::u16string dateAndTimeStringForTextView() {
    return dateAndTimeStringForTextView(storedDateFormatPreferences());
}

std::u16string dateStringForTextView() {
    return dateStringForTextView(storedDateFormatPreferences());
}

std::u16string timeStringForTextView() {
    return timeStringForTextView(storedDateFormatPreferences());
}

std::u16string stringForTimeInterval(double seconds) {
    for (const CountdownUnit& unit : kCountdownUnits)
        if (const std::int64_t count = integerFrom(std::floor(seconds / unit.seconds)); count >= 1)
            return countdownText(count, unit);
    return countdownText(integerFrom(std::ceil(seconds)), kSecondsUnit);
}

} // namespace quillet
