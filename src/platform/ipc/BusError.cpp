#include "platform/ipc/BusError.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform {

namespace {

constexpr std::array<std::pair<BusError, std::string_view>, 8> kNames{{
    {BusError::failed, "org.freedesktop.DBus.Error.Failed"},
    {BusError::invalidArguments, "org.freedesktop.DBus.Error.InvalidArgs"},
    {BusError::accessDenied, "org.freedesktop.DBus.Error.AccessDenied"},
    {BusError::limitsExceeded, "org.freedesktop.DBus.Error.LimitsExceeded"},
    {BusError::unknownMethod, "org.freedesktop.DBus.Error.UnknownMethod"},
    {BusError::serviceUnknown, "org.freedesktop.DBus.Error.ServiceUnknown"},
    {BusError::noServer, "org.freedesktop.DBus.Error.NoServer"},
    {BusError::noReply, "org.freedesktop.DBus.Error.NoReply"},
}};

} // namespace

Error busError(BusError code, std::string_view description) {
    return Error::withDescription(kBusErrorDomain, std::to_underlying(code), description);
}

std::string_view busErrorName(const Error& error) {
    const auto row = std::ranges::find_if(kNames, [&](const auto& name) {
        return error.domain == kBusErrorDomain && error.code == std::to_underlying(name.first);
    });
    return row == kNames.end() ? kNames.front().second : row->second;
}

BusError busErrorNamed(std::string_view name) {
    const auto row = std::ranges::find(kNames, name, [](const auto& entry) { return entry.second; });
    return row == kNames.end() ? BusError::failed : row->first;
}

} // namespace platform
