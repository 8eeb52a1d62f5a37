// Counterpart of NSDateFormatter's styles: dates and times as a locale writes them, in the environment's locale and
// time zone; and ISO 8601 in local time.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Date.h"

namespace platform {

// The values are those of the platform's NSDateFormatterStyle, as preferences store them. Any other number is as none.
enum class DateFormatterStyle : std::int64_t { none = 0, shortStyle = 1, medium = 2, longStyle = 3, full = 4 };

// For standing alone, not inside a sentence (some languages capitalize the month then). Both none: "".
std::u16string localizedDateAndTime(Date date, DateFormatterStyle dateStyle, DateFormatterStyle timeStyle);

// "2024-05-01T09:15:02": local time without its zone, whole seconds.
std::u16string isoLocalDateAndTime(Date date);
// "2024-05-01"
std::u16string isoLocalDate(Date date);
// "09:15:02"
std::u16string isoLocalTime(Date date);

} // namespace platform
