// Counterpart of NSTimeZone: the library's object for the environment's time zone. For this directory only: no other
// includes the library's headers.
#pragma once

#include <memory>
#include <string_view>

#include <unicode/timezone.h>

namespace platform {

// The zone of a name of the zone database ("Europe/Berlin") or of a rule as POSIX has it in TZ
// ("EST5EDT4,M3.2.0,M11.1.0",
// "<+0330>-3:30"). Any other text is UTC, as the C library takes it. Never null.
std::unique_ptr<icu::TimeZone> timeZoneNamed(std::string_view name);

// The environment's.
std::unique_ptr<icu::TimeZone> environmentTimeZone();

} // namespace platform
