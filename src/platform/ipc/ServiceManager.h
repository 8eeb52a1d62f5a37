// Tells the manager that started this process, if one did, how it is doing (sd_notify's protocol).
#pragma once

#include <string_view>

namespace platform {

inline constexpr std::string_view kServiceReady = "READY=1";
inline constexpr std::string_view kServiceStopping = "STOPPING=1";

// Does nothing without a manager that listens ($NOTIFY_SOCKET).
void notifyServiceManager(std::string_view state);

} // namespace platform
