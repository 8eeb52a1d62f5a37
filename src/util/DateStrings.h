// Date and time texts that the editor inserts, and the countdown text.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/Value.h"
#include "platform/foundation/DateStyles.h"

namespace quillet {

inline constexpr std::string_view QLTTextDateFormatStyleKey = "QLTTextDateFormatStyle"; // DateFormatterStyle
inline constexpr std::string_view QLTTextTimeFormatStyleKey = "QLTTextTimeFormatStyle"; // DateFormatterStyle
inline constexpr std::string_view QLTUseISODateFormatsKey = "QLTUseISODateFormats";     // boolean

// What the user stored, as it is: a style that was never stored is none.
struct DateFormatPreferences {
    platform::DateFormatterStyle dateStyle = platform::DateFormatterStyle::none;
    platform::DateFormatterStyle timeStyle = platform::DateFormatterStyle::none;
    bool useISODateFormats = false;
};

// From the standard user defaults. Styles that no formatter knows count as none.
DateFormatPreferences storedDateFormatPreferences();

// The two styles that are taken where none is stored, under their keys; for registration as defaults.
platform::Dictionary defaultDateFormatPreferences();

// All of these read the environment's clock, locale and time zone.

// @sel dateAndTimeStringForDateStyle:timeStyle:
std::u16string dateAndTimeStringForDateStyle(platform::DateFormatterStyle dateStyle,
                                             platform::DateFormatterStyle timeStyle);
// "2024-05-01T09:15:02"
std::u16string dateAndTimeStringInISOFormat();

// The stored styles as they are: with nothing stored the text is empty, while the next two fall back to the defaults.
std::u16string dateAndTimeStringForTextView(const DateFormatPreferences& preferences);
std::u16string dateStringForTextView(const DateFormatPreferences& preferences);
std::u16string timeStringForTextView(const DateFormatPreferences& preferences);

// The same with the stored preferences.
std::u16string dateAndTimeStringForTextView();
std::u16string dateStringForTextView();
std::u16string timeStringForTextView();

// What is left, in the largest unit of which there is one at least, rounded down; below a minute, seconds rounded up.
// In the environment's language, where a translation is. Seconds that no integer holds give the nearest one.
// @sel stringForTimeInterval:
std::u16string stringForTimeInterval(double seconds);

} // namespace quillet
