// The system's names of locales and time zones as ICU writes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// "de_DE.UTF-8@euro" → "de_DE"; "sr_RS@latin" → "sr_Latn_RS"; "", "C" and "POSIX" → "en_US_POSIX".
std::string localeIdentifierFromPOSIX(std::string_view name);

// The names under which a catalogue for an ICU locale may stand, the best first: "de_AT" → "de_AT", "de";
// "sr_Latn_RS" → "sr_RS@latin", "sr@latin", "sr_RS", "sr".
std::vector<std::string> catalogueNamesForLocale(std::string_view identifier);

// The zone that a value of TZ, or the file that it or /etc/localtime names, stands for: ":Europe/Berlin",
// "/usr/share/zoneinfo/Europe/Berlin" → "Europe/Berlin". A rule ("CET-1CEST,M3.5.0,M10.5.0/3") stays what it is;
// TimeZone.h reads it. Nothing named → "UTC".
std::string timeZoneNameFromTZ(std::string_view value);

} // namespace platform
