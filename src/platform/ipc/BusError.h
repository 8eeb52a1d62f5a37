// What a call over the bus is answered with when it cannot be served at all: errors under the bus's own names.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/base/Result.h"

namespace platform {

inline constexpr std::string_view kBusErrorDomain = "BusErrorDomain";

enum class BusError : std::int64_t {
    failed = 1,
    invalidArguments,
    accessDenied,
    limitsExceeded,
    unknownMethod,
    serviceUnknown, // nobody has the name and nothing is installed that could be started for it
    noServer,       // no bus
    noReply,        // the service left or died in mid-call
};

Error busError(BusError code, std::string_view description);

// "org.freedesktop.DBus.Error.InvalidArgs"; an error of another domain is a failure.
std::string_view busErrorName(const Error& error);
// The other way round, an unknown name is a failure.
BusError busErrorNamed(std::string_view name);

} // namespace platform
